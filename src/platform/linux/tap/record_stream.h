#pragma once

#include <xcb/record.h>

#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <span>
#include <variant>
#include <vector>

#include "platform/linux/x11/connection.h"

namespace quil::linux_platform {

/// A key or button that went down or up, or the pointer that moved.
struct DeviceEvent {
    /// XCB_KEY_PRESS, XCB_BUTTON_RELEASE …
    std::uint8_t type = 0;
    /// The key code or the button, as the person has ordered them.
    std::uint8_t detail = 0;
    /// Modifiers, buttons and keyboard group just before.
    std::uint16_t state = 0;
    /// The server's time, in milliseconds.
    std::uint32_t time = 0;
    std::int16_t x = 0;
    std::int16_t y = 0;
};

/// A program gave keys other symbols, `perKey` for each from `firstKey` on.
struct SymbolsChange {
    std::uint8_t firstKey = 0;
    std::uint8_t perKey = 0;
    std::vector<std::uint32_t> symbols;
};

/// A program described the keyboard anew.
struct KeyboardChange {};

/// The keyboard focus moved, or moves for as long as a program grabs the keyboard.
struct FocusChange {
    /// XCB_NOTIFY_MODE_NORMAL, _GRAB, _UNGRAB or _WHILE_GRABBED.
    std::uint8_t mode = 0;
    /// The server's time, in milliseconds.
    std::uint32_t time = 0;
};

/// A program asked for all keys, or gave them back or ended.
struct KeyboardGrab {
    /// The base of the program's ids on the server.
    std::uint32_t client = 0;
    bool isBeginning = false;
};

using StreamItem =
    std::variant<DeviceEvent, SymbolsChange, KeyboardChange, FocusChange, KeyboardGrab>;

/// What the X server records (its Record extension) of the devices, and of what changes the meaning
/// of keys and where they go, all in the order in which it happened. Nobody notices but the server.
class RecordStream {
  public:
    /// Begins to record; null when the server cannot. `withMotion` asks for the pointer's ways,
    /// too. Waits as long as a connection's replies do, at most.
    static std::unique_ptr<RecordStream> open(bool withMotion);

    int descriptor() const;
    /// False once the server has gone or has ended the recording.
    bool isAlive() const { return isAlive_; }
    /// Whether there is to be another look soon, though nothing arrives.
    bool isUnsure() const { return unmatched_.has_value(); }
    /// Adds what has arrived.
    void read(std::deque<StreamItem>& items);
    /// Makes the server send what has happened until now, and waits for it.
    void fetch();
    /// The server's time when the recording began.
    std::uint32_t startTime() const { return startTime_; }

  private:
    using Reply = XcbPointer<xcb_record_enable_context_reply_t>;

    RecordStream(std::shared_ptr<X11Connection> control, std::shared_ptr<X11Connection> data)
        : control_(std::move(control)), data_(std::move(data)) {}
    bool begin(bool withMotion);
    std::vector<xcb_record_range_t> ranges(bool withMotion);
    Reply nextReply();
    bool awaitStart();
    void readEvent(std::span<const std::uint8_t> element, std::deque<StreamItem>& items);
    void readDeviceEvent(const DeviceEvent& event, std::deque<StreamItem>& items);
    void addUnmatched(std::deque<StreamItem>& items);
    void readRequests(const xcb_record_enable_context_reply_t& reply,
                      std::deque<StreamItem>& items) const;
    void readRequest(std::span<const std::uint8_t> request, std::uint32_t client,
                     std::deque<StreamItem>& items) const;

    /// The context belongs to this connection and ends with it.
    std::shared_ptr<X11Connection> control_;
    /// Carries nothing but the recording.
    std::shared_ptr<X11Connection> data_;
    unsigned sequence_ = 0;
    std::uint8_t xkbOpcode_ = 0;
    std::uint8_t xinputOpcode_ = 0;
    std::uint8_t xinputFirstEvent_ = 0;
    /// What a device did, of which the core keyboard or pointer has not told yet; and whether that
    /// was so at the end of the latest reading already.
    std::optional<DeviceEvent> unmatched_;
    bool isOverdue_ = false;
    /// What the core keyboard or pointer told last, of which a copy is to follow.
    std::optional<DeviceEvent> latest_;
    std::uint32_t startTime_ = 0;
    bool isAlive_ = true;
};

}  // namespace quil::linux_platform
