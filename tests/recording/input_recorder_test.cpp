#include "recording/input_recorder.h"

#include <gmock/gmock.h>

#include <atomic>
#include <cmath>
#include <functional>
#include <limits>
#include <thread>
#include <utility>

#include "platform/event_posting.h"
#include "platform/simulated/platform.h"

namespace quil {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class Recorder : public testing::Test {
  protected:
    /// The records so far, each as its action and parameters.
    std::vector<std::string> taken() {
        desktop.settle();
        std::vector<std::string> lines;
        while (const auto record = recorder->next(0)) {
            lines.push_back(record->action + record->params.dump());
        }
        return lines;
    }

    std::string keyPress(std::int64_t code, std::optional<std::string> characters,
                         std::uint64_t flags = 0) {
        desktop.user().key(code, std::move(characters), flags);
        const auto lines = taken();
        return lines.size() == 1 ? lines[0] : std::to_string(lines.size()) + " records";
    }

    SimulatedDesktop desktop;
    SimulatedPlatform platform{desktop};
    std::shared_ptr<InputRecorder> recorder = InputRecorder::create(platform);
};

TEST_F(Recorder, PointerActions) {
    ASSERT_EQ(recorder->start(), InputRecorderStart::started);
    desktop.user().click({10.5, -20}).drag({1, 2}, {300, 400}).scroll({7, 8}, 250);
    desktop.user().scroll({7, 8}, -3).scroll({7, 8}, 0).scroll({7, 8}, -101);
    desktop.settle();
    const auto records = recorder->stopAndDrain();
    const std::int64_t at = 1'700'000'000'000;
    EXPECT_THAT(records, ElementsAre(RecordedInput{"click", Json::object(), Point{10.5, -20}, at},
                                     RecordedInput{"click", Json::object(), Point{1, 2}, at},
                                     RecordedInput{"scroll", {{"amount", 100}}, Point{7, 8}, at},
                                     RecordedInput{"scroll", {{"amount", -3}}, Point{7, 8}, at},
                                     RecordedInput{"scroll", {{"amount", 0}}, Point{7, 8}, at},
                                     RecordedInput{"scroll", {{"amount", -100}}, Point{7, 8}, at}));
}

TEST_F(Recorder, KeysAreTextOrElseCombinations) {
    constexpr std::uint64_t shift = kEventFlagMaskShift, control = kEventFlagMaskControl,
                            option = kEventFlagMaskAlternate, command = kEventFlagMaskCommand;
    const struct {
        std::int64_t code;
        std::optional<std::string> characters;
        std::uint64_t flags;
        std::string record;
    } cases[] = {
        {0, "a", 0, R"(type{"text":"a"})"},
        {0, "A", shift | kEventFlagMaskAlphaShift, R"(type{"text":"A"})"},
        {33, "ẞ한", 0, R"(type{"text":"ẞ한"})"},
        {0, "a", command | shift, R"(keypress{"combo":"cmd+shift+keycode-0"})"},
        {8, "c", control | option, R"(keypress{"combo":"ctrl+alt+keycode-8"})"},
        {8, "ç", option, R"(keypress{"combo":"alt+keycode-8"})"},
        {9, "v", command | control | option | shift | kEventFlagMaskAlphaShift,
         R"(keypress{"combo":"cmd+ctrl+alt+shift+keycode-9"})"},
        {36, "\r", shift, R"(keypress{"combo":"shift+keycode-36"})"},
        {48, "\t", 0, R"(keypress{"combo":"keycode-48"})"},
        {51, "\x7F", 0, R"(keypress{"combo":"keycode-51"})"},
        {4, "x\u0085", 0, R"(keypress{"combo":"keycode-4"})"},  // control, beyond ASCII
        {5, "x\u200D", 0, R"(keypress{"combo":"keycode-5"})"},  // format
        {6, "", 0, R"(keypress{"combo":"keycode-6"})"},
        {65535, {}, 0, R"(keypress{"combo":"keycode-65535"})"},
    };
    ASSERT_EQ(recorder->start(), InputRecorderStart::started);
    for (const auto& [code, characters, flags, record] : cases) {
        EXPECT_EQ(keyPress(code, characters, flags), record);
    }
    desktop.user().secureInput(true).type("secret").click({1, 1});
    EXPECT_THAT(taken(), ElementsAre("click{}"));
    desktop.user().secureInput(false).type("s");
    EXPECT_THAT(taken(), ElementsAre(R"(type{"text":"s"})"));
}

TEST_F(Recorder, StartsOnceAndOnlyWhenItMayAndCan) {
    desktop.user().type("before");
    EXPECT_THAT(taken(), IsEmpty());
    ASSERT_EQ(recorder->start(), InputRecorderStart::started);
    desktop.user().type("a");
    desktop.settle();
    EXPECT_EQ(recorder->start(), InputRecorderStart::started);
    desktop.user().type("b");
    EXPECT_THAT(taken(), ElementsAre(R"(type{"text":"a"})", R"(type{"text":"b"})"));
    EXPECT_EQ(desktop.eventTaps().validTaps(), 1);

    desktop.user().type("c");
    desktop.settle();
    EXPECT_EQ(recorder->stopAndDrain().size(), 1u);
    EXPECT_THAT(recorder->stopAndDrain(), IsEmpty());
    EXPECT_EQ(desktop.eventTaps().validTaps(), 0);
    desktop.permissions.inputMonitoring = false;
    EXPECT_EQ(recorder->start(), InputRecorderStart::permissionDenied);
    desktop.permissions.inputMonitoring = true;
    desktop.on("createTap").nth(1).fails();
    EXPECT_EQ(recorder->start(), InputRecorderStart::tapUnavailable);
    EXPECT_EQ(recorder->start(), InputRecorderStart::started);
    desktop.user().disableTapsByTimeout().type("d").disableTapsByUserInput().type("e");
    EXPECT_THAT(taken(), ElementsAre(R"(type{"text":"d"})", R"(type{"text":"e"})"))
        << "enabled again, nothing noted";
}

TEST_F(Recorder, TheBufferKeepsTheOldest) {
    ASSERT_EQ(recorder->start(), InputRecorderStart::started);
    for (int i = 0; i < 10'001; ++i) desktop.user().click({static_cast<double>(i), 0});
    desktop.settle();
    EXPECT_EQ(recorder->next(0)->point->x, 0);
    desktop.user().click({-1, 0}).click({-2, 0});
    desktop.settle();
    const auto rest = recorder->stopAndDrain();
    ASSERT_EQ(rest.size(), 10'000u);
    EXPECT_EQ(rest[9'998].point->x, 9'999);
    EXPECT_EQ(rest[9'999].point->x, -1);
}

TEST_F(Recorder, WaitsInSteps) {
    const auto waited = [&](std::int64_t timeoutMs) {
        const double before = desktop.clock().now();
        EXPECT_FALSE(recorder->next(timeoutMs));
        return std::llround((desktop.clock().now() - before) * 1000);
    };
    EXPECT_EQ(waited(0), 0);
    EXPECT_EQ(waited(-5), 0);
    EXPECT_EQ(waited(std::numeric_limits<std::int64_t>::min()), 0);
    EXPECT_EQ(waited(120), 150);
    ASSERT_EQ(recorder->start(), InputRecorderStart::started);
    desktop.at(0.26, [](SimulatedDesktop& d) { d.user().type("x"); });
    const auto record = recorder->next(std::numeric_limits<std::int64_t>::max());
    ASSERT_TRUE(record);
    EXPECT_EQ(record->at, 1'700'000'000'260);
    EXPECT_NEAR(desktop.clock().now(), 0.3, 1e-9);
}

TEST_F(Recorder, EventTimes) {
    ASSERT_EQ(recorder->start(), InputRecorderStart::started);
    const auto at = [&](std::uint64_t timestamp) {
        desktop.user().event({.type = kEventLeftMouseDown, .timestamp = timestamp});
        desktop.settle();
        return recorder->next(0)->at;
    };
    EXPECT_EQ(at(999'750'000'000), 1'699'999'999'750);
    desktop.clock().setWallClockAtStart(1.2345);
    EXPECT_EQ(at(1'000'000'000'000), 1'234) << "follows the clock, without rounding up";
    EXPECT_EQ(at(998'765'000'000), 0) << "cut towards zero";
}

TEST_F(Recorder, Payloads) {
    desktop.displays.push_back({2, {1440, -180, 1920, 1080}, "Side"});
    const auto payload = [&](const RecordedInput& record) {
        return inputEventPayload(platform.clock(), platform.displays(), record);
    };
    const RecordedInput typed{"type", {{"text", "é"}}, {}, 42};
    Json json = payload(typed);
    const std::string id = json["id"];
    EXPECT_THAT(id, testing::MatchesRegex("input-[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}"));
    EXPECT_NE(payload(typed)["id"], id);
    json.erase("id");
    EXPECT_EQ(json.dump(), R"({"action":"type","at":42,"kind":"action","params":{"text":"é"}})");

    json = payload({"click", Json::object(), Point{1680, 9999}, 42});
    EXPECT_EQ(json["params"].dump(), "{}");
    EXPECT_EQ(json["target"]["point"].dump(), R"({"x":0.5,"y":1.0})");
    EXPECT_EQ(json["target"]["display"]["name"], "Built-in Display") << "outside every display";
    desktop.displays.clear();
    json = payload({"click", Json::object(), Point{0, 0}, 42});
    EXPECT_EQ(json["target"].dump(), R"({"point":{"x":0.0,"y":0.0}})");
}

/// Does something else while the time is asked for.
class InterruptedClock : public Clock {
  public:
    explicit InterruptedClock(Clock& clock) : clock_(clock) {}
    double timeIntervalSince1970() override {
        if (const auto work = std::exchange(meanwhile, nullptr)) work();
        return clock_.timeIntervalSince1970();
    }
    double systemUptime() override { return clock_.systemUptime(); }
    void sleepMicroseconds(std::uint32_t time) override { clock_.sleepMicroseconds(time); }
    std::string uuidString() override { return clock_.uuidString(); }

    std::function<void()> meanwhile;

  private:
    Clock& clock_;
};

class InterruptedPlatform : public SimulatedPlatform {
  public:
    using SimulatedPlatform::SimulatedPlatform;
    InterruptedClock& clock() override { return clock_; }

  private:
    InterruptedClock clock_{SimulatedPlatform::clock()};
};

TEST(RecorderRaces, ALateEventOfAnEarlierRecordingIsNotOfTheNext) {
    SimulatedDesktop desktop;
    InterruptedPlatform platform(desktop);
    const auto recorder = InputRecorder::create(platform);
    recorder->start();
    platform.clock().meanwhile = [&] {
        recorder->stop();
        recorder->start();
    };
    desktop.user().click({1, 1});
    desktop.settle();
    desktop.user().click({2, 2});
    desktop.settle();
    const auto records = recorder->stopAndDrain();
    ASSERT_EQ(records.size(), 1u);
    EXPECT_EQ(records[0].point, (Point{2, 2}));
}

// For the thread sanitizer; and whatever the order was, no run loop is left running.
TEST_F(Recorder, SurvivesEveryInterleaving) {
    desktop.clock().useRealTime();
    std::atomic<bool> done = false;
    std::atomic<std::size_t> records = 0;
    const auto repeat = [&](auto work) {
        return std::thread([&, work] {
            while (!done) work();
        });
    };
    std::vector<std::thread> threads;
    threads.push_back(repeat([&] { records += recorder->next(0) ? 1 : 0; }));
    threads.push_back(repeat([&] { records += recorder->next(1) ? 1 : 0; }));
    threads.push_back(repeat([&] { desktop.user().type("x").click({1, 2}); }));
    threads.push_back(repeat([&] { desktop.user().disableTapsByUserInput(); }));
    for (int i = 0; i < 2; ++i) {
        threads.push_back(std::thread([&, i] {
            // On a busy machine many a recording is over before anything arrives at it.
            for (int round = 0; round < (records ? 400 : 100'000); ++round) {
                recorder->start();
                if (round % 4 == i) std::this_thread::sleep_for(std::chrono::microseconds(300));
                records += recorder->stopAndDrain().size();
            }
        }));
    }
    for (std::size_t i = 4; i < threads.size(); ++i) threads[i].join();
    done = true;
    for (std::size_t i = 0; i < 4; ++i) threads[i].join();
    EXPECT_GT(records, 0u);
    EXPECT_EQ(recorder->start(), InputRecorderStart::started);
    desktop.user().type("while the recorder goes");
    recorder = nullptr;
    EXPECT_EQ(desktop.eventTaps().validTaps(), 0);
    // The test ends only when every tap thread has left its run loop.
}

}  // namespace
}  // namespace quil
