#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <span>
#include <variant>
#include <vector>

#include "platform/linux/x11/connection.h"
#include "platform/linux/x11/tap/record_replies.h"

namespace quil::linux_platform {

/// A key that went down, a button that went down or up, or the pointer that moved.
struct DeviceEvent {
    /// XCB_KEY_PRESS, XCB_BUTTON_RELEASE …
    std::uint8_t type = 0;
    /// The key code or the button, as the user has ordered them.
    std::uint8_t detail = 0;
    /// Modifiers, buttons and keyboard group just before.
    std::uint16_t state = 0;
    /// The server's time, in milliseconds.
    std::uint32_t time = 0;
    std::int16_t x = 0;
    std::int16_t y = 0;
};

/// A program gave keys other keysyms, `perKey` for each from `firstKey` on.
struct KeysymsChange {
    std::uint8_t firstKey = 0;
    std::uint8_t perKey = 0;
    std::vector<std::uint32_t> keysyms;
};

/// A program replaced the keyboard's description.
struct KeyboardChange {};

/// The keyboard focus moved, or moves for as long as a program grabs the keyboard.
struct FocusChange {
    /// XCB_NOTIFY_MODE_NORMAL, _GRAB, _UNGRAB or _WHILE_GRABBED.
    std::uint8_t mode = 0;
    /// The server's time, in milliseconds.
    std::uint32_t time = 0;
};

/// A client asked for a grab, of the keyboard or of an XInput 2 device, or gave one back.
struct GrabRequest {
    /// The base of the client's ids.
    std::uint32_t client = 0;
    bool isGrab = false;
    /// Nothing for the core protocol's keyboard.
    std::optional<std::uint16_t> device;
    /// The server's time that the request gives; 0 for the time at which it is processed.
    std::uint32_t time = 0;
};

/// The server's reply to the latest request for a grab of that client.
struct GrabReply {
    std::uint32_t client = 0;
    /// The status, where a reply of the core protocol has it and where one of XInput does.
    std::uint8_t coreStatus = 0;
    std::uint8_t xinputStatus = 0;
    /// The server's time, in milliseconds.
    std::uint32_t time = 0;
};

/// A client of another byte order asked for something that may be a grab.
struct UnreadRequest {};

/// A client has disconnected, or was disconnected.
struct ClientEnd {
    std::uint32_t client = 0;
};

using StreamItem = std::variant<DeviceEvent, KeysymsChange, KeyboardChange, FocusChange,
                                GrabRequest, GrabReply, UnreadRequest, ClientEnd>;

/// What the X server records (its Record extension) of the devices, and of what changes the meaning
/// of keys and where they go, all in the order in which it happened. Only the server notices.
class RecordStream {
  public:
    /// Begins to record; null when the server cannot. `withMotion` asks for the pointer's ways,
    /// too. Waits as long as a connection's replies do, at most.
    static std::unique_ptr<RecordStream> open(bool withMotion);

    /// Readable when there is something to read, and once the stream has ended.
    int descriptor() const { return replies_->descriptor(); }
    /// False once the server has gone or has ended the recording.
    bool isAlive() const { return replies_->isAlive(); }
    /// Adds what has arrived.
    void read(std::deque<StreamItem>& items);
    /// Makes the server send what has happened until now, and waits for it.
    void fetch();
    /// The server's time when the recording began.
    std::uint32_t startTime() const { return startTime_; }

  private:
    using Reply = RecordReplies::Reply;

    explicit RecordStream(std::shared_ptr<X11Connection> control) : control_(std::move(control)) {}
    bool begin(bool withMotion);
    std::vector<xcb_record_range_t> ranges(bool withMotion);
    bool awaitStart();
    void readRequests(const xcb_record_enable_context_reply_t& reply,
                      std::deque<StreamItem>& items) const;
    void readRequest(std::span<const std::uint8_t> request, std::uint32_t client,
                     std::deque<StreamItem>& items) const;

    /// The context belongs to this connection and ends with it.
    std::shared_ptr<X11Connection> control_;
    std::unique_ptr<RecordReplies> replies_;
    std::uint8_t xkbOpcode_ = 0;
    std::uint8_t xinputOpcode_ = 0;
    std::uint32_t startTime_ = 0;
};

}  // namespace quil::linux_platform
