#pragma once

#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string_view>
#include <thread>
#include <vector>

#include "platform/event_taps.h"

namespace quil::simulated {

/// One thing that the user's hands do, as a tap sees it.
struct UserEvent {
    /// An event type of event_posting.h.
    std::uint32_t type = 0;
    Point location = {};
    /// Nanoseconds since the system started.
    std::uint64_t timestamp = 0;
    std::uint64_t flags = 0;
    std::int64_t keyCode = 0;
    /// Lines scrolled vertically, up positive.
    std::int64_t scrollLines = 0;
    /// What the key types; nothing when the event converts to no key event with characters.
    std::optional<std::string> characters = {};
};

/// Event taps and run loops on real threads. Events wait at a tap until its source is in a running
/// run loop. May be used from any thread; callbacks run without any lock held.
class SimulatedEventTaps : public EventTaps {
  public:
    /// Asked before a tap or a source is made, with the name of the call; false makes it fail.
    using Gate = std::function<bool(std::string_view call)>;

    explicit SimulatedEventTaps(Gate gate);
    ~SimulatedEventTaps() override;

    EventTapRef createTap(std::uint32_t location, std::uint32_t placement, std::uint32_t options,
                          std::uint64_t mask, EventTapCallback callback) override;
    void enableTap(const EventTapRef& tap, bool enable) override;
    void invalidateTap(const EventTapRef& tap) override;
    RunLoopSourceRef createRunLoopSource(const EventTapRef& tap) override;
    RunLoopRef currentRunLoop() override;
    void addSource(const RunLoopRef& runLoop, const RunLoopSourceRef& source) override;
    void removeSource(const RunLoopRef& runLoop, const RunLoopSourceRef& source) override;
    void invalidateSource(const RunLoopSourceRef& source) override;
    void runCurrentRunLoop() override;
    void stopRunLoop(const RunLoopRef& runLoop) override;
    bool isSecureEventInputEnabled() override;

    /// Hands the event to every valid, enabled tap that wants its type, without waiting.
    void deliver(const UserEvent& event);
    /// Disables every tap and tells it so: by time-out, or by user input.
    void disableTaps(bool byTimeout);
    /// Within a callback, `isSecureEventInputEnabled` tells how it was when the event happened, so
    /// that the result does not depend on how fast the callbacks are.
    void setSecureEventInput(bool enabled);
    /// Waits until the taps' callbacks have returned from everything that was delivered. Gives up
    /// on taps that are not served for two seconds, and drops what waits there.
    void settle();

    /// The numbers of taps that have been made and not invalidated, and of run loops that run now.
    int validTaps();
    int runningRunLoops();
    /// Forgets the calling thread's run loop; for a thread that is about to end.
    void endThread();

  private:
    struct Waiting;
    struct Tap;
    struct Source;
    struct Loop;

    std::shared_ptr<Tap> nextReady(const Loop& loop) const;
    bool isServed(const Loop& loop) const;
    bool isIdle() const;

    const Gate gate_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<std::weak_ptr<Tap>> taps_;
    std::map<std::thread::id, std::shared_ptr<Loop>> loops_;
    bool secureEventInput_ = false;
};

}  // namespace quil::simulated
