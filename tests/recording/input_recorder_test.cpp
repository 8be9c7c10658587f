#include "recording/input_recorder.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <thread>
#include <utility>

#include "platform/simulated/platform.h"

namespace quil {
namespace {

/// Does something else while the time is asked for.
class InterruptedClock : public simulated::SimulatedClock {
  public:
    using SimulatedClock::SimulatedClock;
    double timeIntervalSince1970() override {
        if (const auto work = std::exchange(meanwhile, nullptr)) work();
        return SimulatedClock::timeIntervalSince1970();
    }

    std::function<void()> meanwhile;
};

struct InterruptedPlatform : SimulatedPlatform {
    explicit InterruptedPlatform(SimulatedDesktop& desktop)
        : SimulatedPlatform(desktop), interrupted(desktop) {}
    Clock& clock() override { return interrupted; }

    InterruptedClock interrupted;
};

TEST(RecorderRaces, ALateEventOfAnEarlierRecordingIsNotOfTheNext) {
    SimulatedDesktop desktop;
    InterruptedPlatform platform(desktop);
    const auto recorder = InputRecorder::create(platform);
    recorder->start();
    platform.interrupted.meanwhile = [&] {
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
TEST(RecorderRaces, AreSurvivedInEveryInterleaving) {
    SimulatedDesktop desktop;
    SimulatedPlatform platform(desktop);
    auto recorder = InputRecorder::create(platform);
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
