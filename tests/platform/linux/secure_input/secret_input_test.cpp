#include "platform/linux/secure_input/secret_input.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>

namespace quil::linux_platform {
namespace {

using std::chrono::milliseconds;

constexpr TapTime kStart{std::chrono::hours(1)};
constexpr ClientId kLocker = 0x900000;
/// A reply on the bus takes so long, and so long what the server records.
constexpr milliseconds kRoundTrip{2}, kRecordDelay{4};
/// A program that has not replied by then is given up on.
constexpr milliseconds kHanging{2000};

/// How the programs of a desktop behave.
struct Habits {
    const char* name;
    /// From an event to when the program comes to it, and on to when it says that the focus moved.
    milliseconds lag, report;
    /// It notes the time of the latest press on its window.
    bool tells;
    /// It stands still for so long from some moment after the start.
    milliseconds stuckAt{0}, stuckFor{0};
};

/// A desktop with two programs. The first one's focus goes round between two plain fields and a
/// password field, the other one has a plain field alone. Time passes when the test says so.
class FakeDesktop : public FocusSources, public FocusReports {
  public:
    explicit FakeDesktop(const Habits& habits, int focus) : habits_(habits), focus_(focus) {
        reports_.push_back(makeReport(TapTime(), FocusReport::Content::unknown));
        settle();
    }

    static constexpr int kPassword = 1, kFields = 3, kOtherField = 3;
    int focus() const { return isOther_ ? kOtherField : focus_; }
    bool isPassword() const { return focus() == kPassword; }

    /// The user presses something, which moves the focus to that field; whether it moves.
    bool press(TapTime time, std::optional<int> field) {
        const TapTime processed = comeTo(time);
        presses_.push_back({processed, time, isOther_});
        if (!field || isOther_ || *field == focus_) return false;
        focus_ = *field;
        say(processed);
        return true;
    }
    void switchPrograms(TapTime time) {
        isOther_ = !isOther_;
        switches_.push_back(time);
        say(comeTo(time));
    }
    void sleepUntil(TapTime time) { now_ = time; }
    /// When something next arrives.
    TapTime nextArrival() const {
        TapTime next = TapTime::max();
        const auto add = [&](TapTime time) {
            if (time > now_) next = std::min(next, time);
        };
        for (const auto& report : underWay_) {
            add(report.arrival);
            add(report.arrival + kRoundTrip);
        }
        for (const auto& [round, reply] : rounds_) add(reply);
        return next;
    }

    TapTime now() override { return now_; }
    FocusReports* reports() override { return this; }
    ActiveProgram activeProgram() override {
        const auto passed =
            std::ranges::count_if(switches_, [&](auto time) { return time <= now_; });
        const int number = passed % 2 == 0 ? 1 : 2;
        return {number, static_cast<ClientId>(number) << 21, static_cast<std::uint32_t>(number)};
    }
    std::optional<TapTime> latestPressOf(const ActiveProgram& program) override {
        if (!habits_.tells) return {};
        TapTime latest;
        for (const auto& press : presses_) {
            if (press.isOther == (program.pid == 2) && press.processed <= now_) latest = press.time;
        }
        return latest;
    }
    bool isHelperOf(std::int32_t, std::int32_t) override { return false; }

    std::optional<TapTime> process() override {
        settle();
        for (auto& [round, reply] : rounds_) {
            if (reply <= now_ && !round->replied) round->replied = reply;
        }
        return {};
    }
    const std::deque<FocusReport>& reports() const override { return reports_; }
    std::optional<std::int32_t> processOf(const FocusReport& report) const override {
        return report.element.path == "3" ? 2 : 1;
    }
    std::shared_ptr<const Round> askAgain(const std::set<std::int32_t>&) override {
        // It replies when it has worked off what was there before.
        TapTime reply = stuckUntil(now_);
        for (const Press& press : presses_) {
            if (press.time <= now_) reply = std::max(reply, press.processed);
        }
        const bool hangs = reply > now_ + kHanging;
        auto round = std::make_shared<Round>(Round{.asked = now_, .failed = hangs});
        rounds_.emplace_back(round, hangs ? now_ + kHanging : reply + kRoundTrip);
        return round;
    }
    void learnPrograms() override {}

  private:
    struct Press {
        TapTime processed, time;
        bool isOther;
    };

    TapTime stuckUntil(TapTime time) const {
        const TapTime begin = kStart + habits_.stuckAt, end = begin + habits_.stuckFor;
        return time >= begin && time < end ? end : time;
    }
    TapTime comeTo(TapTime event) {
        processed_ = std::max(processed_, stuckUntil(event + habits_.lag));
        return processed_;
    }
    FocusReport makeReport(TapTime arrival, FocusReport::Content content) const {
        return {.element = {":1", std::to_string(focus())}, .arrival = arrival, .content = content};
    }
    void say(TapTime processed) {
        underWay_.push_back(
            makeReport(stuckUntil(processed + habits_.report), FocusReport::Content::unknown));
    }
    /// What has arrived is there, and its element says what it is one round trip later.
    void settle() {
        while (!underWay_.empty() && underWay_.front().arrival <= now_) {
            reports_.push_back(underWay_.front());
            underWay_.pop_front();
        }
        for (FocusReport& report : reports_) {
            if (stuckUntil(report.arrival + kRoundTrip) > now_) continue;
            report.content = report.element.path == "1" ? FocusReport::Content::secret
                                                        : FocusReport::Content::plain;
        }
    }

    const Habits habits_;
    TapTime now_ = kStart;
    TapTime processed_;
    int focus_;
    bool isOther_ = false;
    std::vector<Press> presses_;
    std::vector<TapTime> switches_;
    std::deque<FocusReport> underWay_, reports_;
    std::deque<std::pair<std::shared_ptr<Round>, TapTime>> rounds_;
};

/// What a user does between two letters: eight acts, an octal digit each.
enum class Act { nothing, tab, click, uselessClick, shortcut, uselessShortcut, window, lock };

/// What happens on such a desktop, and what is recorded of it.
class Conversation {
  public:
    Conversation(const Habits& habits, int focus, milliseconds pause)
        : desktop_(habits, focus),
          secrets_(desktop_),
          pause_(pause),
          isUnhurried_(2 * pause > habits.lag + habits.report) {
        sawPassword_ = desktop_.isPassword();
    }

    void act(Act act) {
        time_ += pause_;
        switch (act) {
            case Act::nothing:
                break;
            case Act::tab:
                key(true, (desktop_.focus() + 1) % FakeDesktop::kFields);
                break;
            case Act::click:
                click(FakeDesktop::kPassword);
                break;
            case Act::uselessClick:
                click({});
                break;
            case Act::shortcut:
                key(true, 0);
                break;
            case Act::uselessShortcut:
                key(true, {});
                break;
            case Act::window:
                // What one program says explains nothing of what was done in the other.
                isEachDoingEffective_ &= !hasSwitched_;
                hasSwitched_ = true;
                desktop_.switchPrograms(time_);
                later([this, time = time_] { secrets_.windowGotFocus(time); });
                break;
            case Act::lock:
                isLocked_ = !isLocked_;
                break;
        }
        sawPassword_ |= desktop_.isPassword();
        time_ += pause_;
        key(false, {});
    }

    /// Lets everything be decided; what is wrong with that.
    std::string verdict() {
        for (auto waiting = keys_.begin(); waiting != keys_.end() || !items_.empty();) {
            secrets_.process();
            for (; waiting != keys_.end() && waiting->read <= desktop_.now(); ++waiting) {
                const auto isSecret = secrets_.isSecret(waiting->time, waiting->grabbers);
                if (!isSecret) break;
                if (!*isSecret && waiting->isHidden) return "a secret is recorded";
                if (*isSecret && !waiting->isHidden && isSure()) return "a key is lost";
            }
            if (waiting == keys_.end()) return {};
            TapTime next = desktop_.nextArrival();
            if (secrets_.nextLook()) next = std::min(next, *secrets_.nextLook());
            if (!items_.empty()) next = std::min(next, items_.front().first);
            if (next == TapTime::max() || next > time_ + std::chrono::seconds(60)) return "stuck";
            desktop_.sleepUntil(std::max(next, desktop_.now() + std::chrono::microseconds(1)));
            for (; !items_.empty() && items_.front().first <= desktop_.now(); items_.pop_front()) {
                items_.front().second();
            }
        }
        return {};
    }

  private:
    struct Key {
        TapTime time, read;
        bool isHidden;
        std::vector<ClientId> grabbers;
    };

    /// Nothing is left to guess where no secret is near, or where every doing moves the focus and
    /// the program says so before the next one.
    bool isSure() const { return !sawPassword_ || (isEachDoingEffective_ && isUnhurried_); }
    void later(std::function<void()> item) {
        items_.emplace_back(time_ + kRecordDelay, std::move(item));
    }
    void press(std::optional<int> field) {
        if (isLocked_) return void(isEachDoingEffective_ = false);
        isEachDoingEffective_ &= desktop_.press(time_, field);
    }
    void key(bool mayMove, std::optional<int> field) {
        keys_.push_back({time_, time_ + kRecordDelay, isLocked_ || desktop_.isPassword(),
                         isLocked_ ? std::vector{kLocker} : std::vector<ClientId>{}});
        if (!mayMove) {
            if (!isLocked_) desktop_.press(time_, {});
            return later([] {});
        }
        press(field);
        later([this, time = time_] { secrets_.mayMoveFocus(time, FocusMoves::Kind::press); });
    }
    void click(std::optional<int> field) {
        press(field);
        later([this, time = time_] {
            secrets_.mayMoveFocus(time, FocusMoves::Kind::press);
            secrets_.mayMoveFocus(time + milliseconds(1), FocusMoves::Kind::release);
        });
    }

    FakeDesktop desktop_;
    SecretInput secrets_;
    const milliseconds pause_;
    const bool isUnhurried_;
    TapTime time_ = kStart;
    bool isLocked_ = false;
    bool sawPassword_ = false;
    bool isEachDoingEffective_ = true;
    bool hasSwitched_ = false;
    std::vector<Key> keys_;
    std::deque<std::pair<TapTime, std::function<void()>>> items_;
};

/// Requests for grabs by two clients: who has a keyboard, and who only asked.
TEST(KeyboardGrabs, CountWhenTheServerGrantsThem) {
    constexpr auto core = KeyboardGrabs::Protocol::core, xinput = KeyboardGrabs::Protocol::xinput;
    constexpr std::uint8_t granted = 0, refused = 1;
    const TapTime key = kStart;
    KeyboardGrabs grabs;
    const auto holders = [&](TapTime time) { return grabs.grabbers(time); };
    const auto nobody = std::vector<ClientId>{}, first = std::vector<ClientId>{1};

    grabs.requested({1, core, 0, 100});
    EXPECT_EQ(holders(key), nobody) << "not yet";
    grabs.replied(1, granted, refused, 110);
    grabs.requested({2, xinput, 0});
    grabs.replied(2, granted, refused, 120);
    grabs.clientEnded(2);
    EXPECT_EQ(holders(key), first) << "the second one was refused";
    grabs.released({1, xinput, 0});
    grabs.released({2, core, 0});
    grabs.released({1, core, 0, 99});
    grabs.requestedOther(1);
    grabs.replied(1, refused, refused, 130);
    EXPECT_EQ(holders(key), first) << "of another kind, of another client, too early, of a mouse";
    grabs.released({1, core, 0, 100});
    EXPECT_EQ(holders(key), nobody);

    grabs.requested({1, xinput, 7});
    grabs.replied(1, refused, granted, 140);
    grabs.coreKeyboardReleased();
    EXPECT_EQ(holders(key), first) << "another keyboard";
    grabs.clientEnded(1);
    EXPECT_EQ(holders(key), nobody);

    grabs.foundGrabbed();
    EXPECT_TRUE(grabs.isUnsure());
    grabs.foundFree(key);
    EXPECT_FALSE(grabs.isUnsure());
    EXPECT_EQ(holders(key), std::vector{kUnknownClient}) << "it may have been there until then";
    EXPECT_EQ(holders(key + milliseconds(1)), nobody);
}

/// A key that may have gone into a password field is never recorded; one that surely went elsewhere
/// is. In every order of what a user may do, at several paces, with programs of several habits.
TEST(SecretInput, KeepsSecretsAndNothingElse) {
    const Habits programs[] = {
        {"prompt", milliseconds(1), milliseconds(2), true},
        {"prompt and mute", milliseconds(1), milliseconds(2), false},
        {"slow", milliseconds(300), milliseconds(100), true},
        {"slow and mute", milliseconds(60), milliseconds(60), false},
        {"stuck", milliseconds(1), milliseconds(2), true, milliseconds(10), milliseconds(1500)},
        {"stuck and mute", milliseconds(1), milliseconds(2), false, milliseconds(10),
         milliseconds(1500)},
        {"stuck for long", milliseconds(1), milliseconds(2), true, milliseconds(30),
         milliseconds(6000)},
    };
    int failures = 0;
    for (const Habits& habits : programs) {
        for (const int pause : {5, 40, 250}) {
            for (const int focus : {0, FakeDesktop::kPassword}) {
                for (unsigned acts = 0; acts < 010000; ++acts) {
                    Conversation conversation(habits, focus, milliseconds(pause));
                    for (const int shift : {9, 6, 3, 0}) {
                        conversation.act(static_cast<Act>(acts >> shift & 7));
                    }
                    const std::string wrong = conversation.verdict();
                    if (wrong.empty()) continue;
                    ADD_FAILURE() << habits.name << ", " << pause << " ms, from " << focus
                                  << ", acts " << std::oct << acts << ": " << wrong;
                    ASSERT_LT(++failures, 20);
                }
            }
        }
    }
}

}  // namespace
}  // namespace quil::linux_platform
