#pragma once

#include <poll.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <vector>

#include "platform/event_taps.h"
#include "platform/linux/secure_input/desktop_focus.h"
#include "platform/linux/secure_input/secret_input.h"
#include "platform/linux/secure_input/server_clock.h"
#include "platform/linux/x11/tap/grab_watch.h"
#include "platform/linux/x11/tap/key_reader.h"
#include "platform/linux/x11/tap/record_stream.h"

namespace quil::linux_platform {

/// A tap on what the X server records. Made on any thread, served by one run loop.
class InputTap : public EventTap {
  public:
    /// Begins to listen; null when the server does not let us. Events wait until the tap is served.
    static std::shared_ptr<InputTap> open(std::uint64_t mask, EventTapCallback callback);

    ~InputTap() override;

    // For any thread.
    void enable(bool isEnabled) { isEnabled_ = isEnabled; }
    /// Once this has returned no callback begins.
    void invalidate();
    /// Asks the run loop to process everything that has happened until now.
    int requestFlush();
    /// Waits until it has done so; not for long, and not when it is invalidated.
    void awaitFlush(int request);
    /// False once it is invalidated or the server has gone.
    bool isValid() const { return isValid_; }

    // For the run loop's thread.
    /// Adds the descriptors to wait for. The time after which to call `dispatch` anyhow.
    std::chrono::milliseconds prepareToWait(std::vector<pollfd>& descriptors);
    /// Processes what has arrived.
    void dispatch();
    /// Whether the event in the callback happened while a secret was typed.
    bool isSecureEventInputEnabled() const { return isSecure_; }

  private:
    /// An event on its way to the callback.
    struct Event;

    InputTap(std::uint64_t mask, EventTapCallback callback, std::unique_ptr<RecordStream> stream,
             std::shared_ptr<X11Connection> connection, ServerClock clock);
    void read();
    void read(const DeviceEvent& event);
    void readKey(const DeviceEvent& event);
    void readButton(const DeviceEvent& event);
    void read(const FocusChange& change);
    Event makeEvent(std::uint32_t type, const DeviceEvent& event);
    void deliverWaiting();
    void fetchForFlush();
    void endFlush();
    void deliver(const Event& event);

    const std::uint64_t mask_;
    const EventTapCallback callback_;
    std::unique_ptr<RecordStream> stream_;
    const ServerClock clock_;
    KeyReader keys_;
    X11Display display_;
    GrabWatch grabs_;
    DesktopFocus focus_;
    SecretInput secrets_;
    /// Read and not yet delivered, oldest first.
    std::deque<Event> waiting_;
    bool isSecure_ = false;
    /// The request that is being worked on, and how many of the waiting events it is about.
    int flush_ = 0;
    std::size_t toFlush_ = 0;
    std::mutex flushLock_;
    std::condition_variable flushEnded_;
    int flushRequests_ = 0;
    int flushesDone_ = 0;
    std::atomic<bool> isEnabled_ = true;
    std::atomic<bool> isValid_ = true;
};

}  // namespace quil::linux_platform
