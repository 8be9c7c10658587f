#include "recording/input_recorder.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "recording/recorded_keys.h"

namespace quil {
namespace {

constexpr std::size_t kMaximumEvents = 10'000;
constexpr std::uint32_t kPollMicroseconds = 50'000;
constexpr std::int64_t kMaximumScroll = 100;
/// A year, which is as good as for ever, and keeps a simulated clock within its range.
constexpr std::int64_t kLongestWaitMs = 31'536'000'000;

constexpr std::uint64_t bit(std::uint32_t type) {
    return std::uint64_t{1} << type;
}

constexpr std::uint64_t kTapMask = bit(kEventLeftMouseDown) | bit(kEventLeftMouseUp) |
                                   bit(kEventLeftMouseDragged) | bit(kEventKeyDown) |
                                   bit(kEventScrollWheel);

}  // namespace

std::shared_ptr<InputRecorder> InputRecorder::create(Platform& platform) {
    return std::shared_ptr<InputRecorder>(new InputRecorder(platform));
}

InputRecorder::~InputRecorder() {
    end();
}

InputRecorderStart InputRecorder::start() {
    Recording recording = 0;
    {
        const std::lock_guard guard(lock_);
        if (active_) return InputRecorderStart::started;
        events_.clear();
        recording = ++lastRecording_;
    }
    if (!listenAccessGranted(platform_.permissions())) return InputRecorderStart::permissionDenied;

    EventTaps& taps = platform_.eventTaps();
    const std::weak_ptr<InputRecorder> self = weak_from_this();
    const EventTapRef tap =
        taps.createTap(kSessionEventTap, kHeadInsertEventTap, kEventTapOptionListenOnly, kTapMask,
                       [self, recording](std::uint32_t type, const TappedEvent& event) {
                           const auto recorder = self.lock();
                           if (recorder) recorder->handle(recording, type, event);
                       });
    if (!tap) return InputRecorderStart::tapUnavailable;

    // Another thread may start or stop a recording between any two of these steps. Whatever it
    // does, this tap is either the recorder's or invalid when we return.
    bool isOurs = false;
    {
        const std::lock_guard guard(lock_);
        if (!active_) {
            tap_ = tap;
            recording_ = recording;
            active_ = isOurs = true;
        }
    }
    if (!isOurs) {
        taps.invalidateTap(tap);
        return InputRecorderStart::started;
    }
    const RunLoopSourceRef source = taps.createRunLoopSource(tap);
    {
        const std::lock_guard guard(lock_);
        if (!isCurrent(recording)) return InputRecorderStart::started;
        runLoopSource_ = source;
    }
    const ThreadRef thread = platform_.threads().startThread(
        "quil.input-tap", QualityOfService::standard,
        [&taps, self, recording, tap] { serve(taps, self, recording, tap); });
    if (!thread) {
        // The tap would never be served. Unless a stop has come first, all is undone.
        end(recording);
        return InputRecorderStart::tapUnavailable;
    }
    const std::lock_guard guard(lock_);
    if (isCurrent(recording)) thread_ = thread;
    return InputRecorderStart::started;
}

/// The tap thread. A stop at any moment ends it: one that comes before the run loop runs has made
/// the source invalid, without which the loop returns at once.
void InputRecorder::serve(EventTaps& taps, const std::weak_ptr<InputRecorder>& recorder,
                          Recording recording, const EventTapRef& tap) {
    const RunLoopRef runLoop = taps.currentRunLoop();
    RunLoopSourceRef source;
    {
        const auto alive = recorder.lock();
        if (!alive || !alive->joinRunLoop(recording, runLoop, source)) return;
    }
    taps.addSource(runLoop, source);
    taps.enableTap(tap, true);
    taps.runCurrentRunLoop();
}

/// Notes the tap thread's run loop and gives the source to add to it. False when the recording has
/// ended, even if another has begun since.
bool InputRecorder::joinRunLoop(Recording recording, const RunLoopRef& runLoop,
                                RunLoopSourceRef& source) {
    const std::lock_guard guard(lock_);
    if (!isCurrent(recording) || !runLoopSource_) return false;
    tapRunLoop_ = runLoop;
    source = runLoopSource_;
    return true;
}

std::optional<RecordedInput> InputRecorder::next(std::int64_t timeoutMs) {
    if (auto record = takeFirst()) return record;
    Clock& clock = platform_.clock();
    const double deadline =
        clock.systemUptime() + static_cast<double>(std::min(timeoutMs, kLongestWaitMs)) / 1000;
    while (clock.systemUptime() < deadline) {
        clock.sleepStep(kPollMicroseconds, deadline);
        if (auto record = takeFirst()) return record;
    }
    return {};
}

std::optional<RecordedInput> InputRecorder::takeFirst() {
    const std::lock_guard guard(lock_);
    if (events_.empty()) return {};
    RecordedInput first = std::move(events_.front());
    events_.pop_front();
    return first;
}

std::vector<RecordedInput> InputRecorder::stopAndDrain() {
    EventTapRef tap;
    {
        const std::lock_guard guard(lock_);
        tap = tap_;
    }
    if (tap) platform_.eventTaps().flushTap(tap);
    return end();
}

/// Ends the recording that runs and takes its records; given a number, does nothing to another one.
std::vector<RecordedInput> InputRecorder::end(std::optional<Recording> only) {
    std::deque<RecordedInput> taken;
    EventTapRef tap;
    RunLoopSourceRef source;
    RunLoopRef runLoop;
    {
        const std::lock_guard guard(lock_);
        if (only && !isCurrent(*only)) return {};
        active_ = false;
        tap.swap(tap_);
        source.swap(runLoopSource_);
        runLoop.swap(tapRunLoop_);
        thread_ = nullptr;
        taken.swap(events_);
    }
    EventTaps& taps = platform_.eventTaps();
    if (tap) {
        taps.enableTap(tap, false);
        taps.invalidateTap(tap);
    }
    if (source) {
        if (runLoop) taps.removeSource(runLoop, source);
        taps.invalidateSource(source);
        if (runLoop) taps.stopRunLoop(runLoop);
    }
    return {std::make_move_iterator(taken.begin()), std::make_move_iterator(taken.end())};
}

void InputRecorder::handle(Recording recording, std::uint32_t type, const TappedEvent& event) {
    if (!active_) return;
    if (type == kEventTapDisabledByTimeout || type == kEventTapDisabledByUserInput) {
        EventTapRef tap;
        {
            const std::lock_guard guard(lock_);
            if (isCurrent(recording)) tap = tap_;
        }
        if (tap) platform_.eventTaps().enableTap(tap, true);
        return;
    }
    const Point location = event.location();
    const std::int64_t at = eventEpochMillis(platform_.clock(), event);
    switch (type) {
        case kEventLeftMouseDown:
            return append(recording, {"click", Json::object(), location, at});
        case kEventScrollWheel: {
            const auto amount = std::clamp(event.integerValueField(kScrollWheelEventDeltaAxis1),
                                           -kMaximumScroll, kMaximumScroll);
            return append(recording, {"scroll", {{"amount", amount}}, location, at});
        }
        case kEventKeyDown:
            return handleKeyDown(recording, event, at);
        default:
            return;
    }
}

void InputRecorder::handleKeyDown(Recording recording, const TappedEvent& event, std::int64_t at) {
    if (platform_.eventTaps().isSecureEventInputEnabled()) return;
    if (auto text = plainText(event)) {
        append(recording, {"type", {{"text", std::move(*text)}}, {}, at});
    } else {
        append(recording, {"keypress", {{"combo", keyCombination(event)}}, {}, at});
    }
}

void InputRecorder::append(Recording recording, RecordedInput record) {
    const std::lock_guard guard(lock_);
    if (!isCurrent(recording)) return;
    if (events_.size() < kMaximumEvents) events_.push_back(std::move(record));
}

bool listenAccessGranted(Permissions& permissions) {
    return permissions.preflightListenEventAccess();
}

bool requestListenAccess(Permissions& permissions) {
    return listenAccessGranted(permissions) || permissions.requestListenEventAccess();
}

}  // namespace quil
