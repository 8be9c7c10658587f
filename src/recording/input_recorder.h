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
    tapUnavailable,    ///< The system makes no tap, or no thread to serve it.
};

/// Records what the user does with mouse and keyboard, by a tap that only listens and runs on a
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
    /// The number of an attempt to start one; no two have the same.
    using Recording = std::uint64_t;

    explicit InputRecorder(Platform& platform) : platform_(platform) {}

    bool isCurrent(Recording recording) const { return active_ && recording_ == recording; }
    static void serve(EventTaps& taps, const std::weak_ptr<InputRecorder>& recorder,
                      Recording recording, const EventTapRef& tap);
    bool joinRunLoop(Recording recording, const RunLoopRef& runLoop, RunLoopSourceRef& source);
    void handle(Recording recording, std::uint32_t type, const TappedEvent& event);
    void handleKeyDown(Recording recording, const TappedEvent& event, std::int64_t at);
    void append(Recording recording, RecordedInput record);
    std::optional<RecordedInput> takeFirst();
    std::vector<RecordedInput> end(std::optional<Recording> only = {});

    Platform& platform_;

    /// Guards what follows. Held for short reads and writes alone, never during a platform call.
    std::mutex lock_;
    std::deque<RecordedInput> events_;
    EventTapRef tap_;
    RunLoopSourceRef runLoopSource_;
    RunLoopRef tapRunLoop_;
    ThreadRef thread_;
    Recording lastRecording_ = 0;
    /// The one that `active_` is about: a callback may still be at work for an earlier one.
    Recording recording_ = 0;
    /// Written under the lock, read without it for every event.
    std::atomic<bool> active_ = false;
};

/// Whether this process may listen to the user's input.
bool listenAccessGranted(Permissions& permissions);
/// The same, asking the user when it may not. Returns what the user decided.
bool requestListenAccess(Permissions& permissions);

}  // namespace quil
