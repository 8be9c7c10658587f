#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "platform/geometry.h"
#include "platform/value.h"

namespace quil::simulated {

/// An input event that was posted. Which fields mean something depends on the type (event_posting.h
/// and event_taps.h give the numbers).
struct PostedEvent {
    std::uint32_t type = 0;
    std::uint32_t tapLocation = 0;
    /// The state its source was made with; nothing for an event without a source.
    std::optional<std::int32_t> sourceState;
    // Mouse and wheel events.
    Point location;
    std::uint32_t button = 0;
    /// Nothing unless it was set.
    std::optional<std::int64_t> clickState;
    // Wheel events.
    std::uint32_t units = 0;
    std::uint32_t wheelCount = 0;
    std::int32_t wheel1 = 0;
    std::int32_t wheel2 = 0;
    std::int32_t wheel3 = 0;
    // Key events.
    std::uint16_t keyCode = 0;
    /// Of key and mouse events; nothing unless flags were set.
    std::optional<std::uint64_t> flags;
    /// Nothing unless a text was set; UTF-16 units.
    std::optional<std::u16string> text;

    bool operator==(const PostedEvent&) const = default;
};

/// A call of the pasteboard.
struct PasteboardCall {
    enum class Operation { stringForType, clearContents, setString };
    Operation operation = Operation::clearContents;
    std::string type;
    /// What was read (nothing when there was nothing) or written.
    std::optional<std::string> text;
    /// Of a write: whether it was accepted.
    bool accepted = true;
    bool operator==(const PasteboardCall&) const = default;
};

/// An action performed on an element, or an attribute set.
struct ElementCall {
    enum class Operation { performAction, setAttributeValue };
    Operation operation = Operation::performAction;
    /// The element's id, or its role when it has none.
    std::string element;
    /// Of the action or the attribute.
    std::string name;
    std::optional<Value> value;
    /// The result code.
    std::int32_t result = 0;
    bool operator==(const ElementCall&) const = default;
};

/// A window that was asked to come to the front.
struct WindowActivation {
    std::int64_t number = 0;
    bool accepted = false;
    bool operator==(const WindowActivation&) const = default;
};

struct Pause {
    std::uint64_t microseconds = 0;
    bool operator==(const Pause&) const = default;
};

/// A bundle that was opened, or refused to be.
struct Launch {
    std::string path;
    bool opened = false;
    bool operator==(const Launch&) const = default;
};

/// The user was asked for Input Monitoring.
struct PermissionRequest {
    bool granted = false;
    bool operator==(const PermissionRequest&) const = default;
};

/// One thing that was done to the desktop, in the order in which it was done.
struct LogEntry {
    /// Seconds of the desktop's clock since it started.
    double time = 0;
    /// How many lines of standard input had reached the runtime.
    int request = 0;
    std::variant<PostedEvent, PasteboardCall, ElementCall, Pause, Launch, PermissionRequest,
                 WindowActivation>
        what;
};

/// The name of an event type ("leftMouseDown"), or its number.
std::string eventTypeName(std::uint32_t type);
/// The event type of that name, or nothing.
std::optional<std::uint32_t> eventTypeNamed(std::string_view name);

/// The entry in one line, without its time; what is as usual is left out:
///
///     leftMouseDown 100,200
///     rightMouseDown 100,200 click 1 flags 0x20000
///     scrollWheel 500,300 wheels -3,0
///     keyDown 17 flags 0x120000
///     keyUp 0 text "héllo"
///     stringForType "old"           (stringForType nothing, when there was none)
///     clearContents
///     setString "new"
///     setString "new" refused
///     sleep 8000
///     performAction ok AXPress      (followed by "result -25205" when it failed)
///     setAttributeValue AXTextField AXFocused true
///     openUrl /Applications/Notes.app
///     openUrl /Applications/Gone.app refused
///     requestListenEventAccess granted
///     activateWindow 3
///     activateWindow 9 refused
///
/// Unusual, and so said: "button 1" for a button that does not fit the type, "tap 1" for another
/// place than the HID tap, "source 1" for a mouse event with a source, "no source" for a key event
/// without one, "source 0" for one with another state than the HID system state, "units 0" for
/// another unit than lines, "count 1" for another wheel count than 2, a third wheel that is not 0,
/// "type ..." for another pasteboard type than plain text.
std::string describe(const LogEntry& entry);

}  // namespace quil::simulated
