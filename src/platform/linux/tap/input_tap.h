#pragma once

#include <poll.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <vector>

#include "platform/event_tap.h"
#include "platform/linux/tap/key_reader.h"
#include "platform/linux/tap/record_stream.h"
#include "platform/linux/tap/secret_input.h"
#include "platform/linux/tap/server_clock.h"

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
    void invalidate() { isValid_ = false; }
    /// False once it is invalidated or the server has gone.
    bool isValid() const { return isValid_; }

    // For the run loop's thread.
    /// Adds the descriptors to wait for. The time after which to call `dispatch` anyhow.
    std::chrono::milliseconds prepareToWait(std::vector<pollfd>& descriptors);
    /// Deals with what has arrived.
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
    TapTime timeOf(std::uint32_t serverTime) const;
    void deliver(const Event& event);

    const std::uint64_t mask_;
    const EventTapCallback callback_;
    std::unique_ptr<RecordStream> stream_;
    const ServerClock clock_;
    KeyReader keys_;
    X11Display display_;
    SecretInput secrets_;
    /// Read and not yet delivered, oldest first.
    std::deque<Event> waiting_;
    /// When there is something to do though nothing arrives.
    std::optional<TapTime> nextLook_;
    bool isSecure_ = false;
    std::atomic<bool> isEnabled_ = true;
    std::atomic<bool> isValid_ = true;
};

}  // namespace quil::linux_platform
