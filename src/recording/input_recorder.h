#pragma once

#include <atomic>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "platform/platform.h"
#include "recording/recorded_input.h"

namespace quil {

/// The outcome of starting a recording.
enum class InputRecorderStart {
    started,           ///< A recording runs, begun now or before.
    permissionDenied,  ///< Input Monitoring is not granted.
    tapUnavailable,    ///< The system makes no tap.
};

/// Records what the person does with mouse and keyboard, by a tap that only listens and runs on a
/// thread of its own. The records wait here until they are taken; of more than 10,000 the newest
/// are dropped. All operations may be called from any thread; the tap thread keeps no recorder
/// alive.
class InputRecorder : public std::enable_shared_from_this<InputRecorder> {
  public:
    /// `platform` outlives the recorder, and waits for the tap thread before its own end.
    static std::shared_ptr<InputRecorder> create(Platform& platform);
    /// Ends a recording that runs.
    ~InputRecorder();
    InputRecorder(const InputRecorder&) = delete;
    InputRecorder& operator=(const InputRecorder&) = delete;

    /// Begins a recording with an empty buffer, without waiting for the tap thread. A recording
    /// that runs already goes on and keeps its records. On failure the buffer is empty, too.
    InputRecorderStart start();
    /// Takes the oldest record, waiting that many milliseconds for one, to the next 50; absent when
    /// none came. A wait of zero or less is none at all. Works without a recording, too.
    std::optional<RecordedInput> next(std::int64_t timeoutMs);
    /// Lets what has been done until now be recorded, ends the recording, if there is one, without
    /// waiting for the end of the tap thread, and takes all records, oldest first.
    std::vector<RecordedInput> stopAndDrain();
    /// The same; the records are given up.
    void stop() { stopAndDrain(); }

  private:
    explicit InputRecorder(Platform& platform) : platform_(platform) {}

    bool isCurrent(const EventTapRef& tap) const { return active_ && tap_ == tap; }
    static void serve(EventTaps& taps, const std::weak_ptr<InputRecorder>& recorder,
                      const EventTapRef& tap);
    bool joinRunLoop(const EventTapRef& tap, const RunLoopRef& runLoop, RunLoopSourceRef& source);
    void handle(std::uint32_t type, const TappedEvent& event);
    void handleKeyDown(const TappedEvent& event, std::int64_t at);
    void append(RecordedInput record);
    std::optional<RecordedInput> takeFirst();
    std::vector<RecordedInput> end();

    Platform& platform_;

    /// Guards what follows. Held for short reads and writes alone, never during a platform call.
    std::mutex lock_;
    std::deque<RecordedInput> events_;
    EventTapRef tap_;
    RunLoopSourceRef runLoopSource_;
    RunLoopRef tapRunLoop_;
    ThreadRef thread_;
    /// Written under the lock, read without it for every event.
    std::atomic<bool> active_ = false;
};

/// Whether this process may listen to the person's input.
bool listenAccessGranted(Permissions& permissions);
/// The same, asking the person when it may not. Returns what they answered.
bool requestListenAccess(Permissions& permissions);

}  // namespace quil
