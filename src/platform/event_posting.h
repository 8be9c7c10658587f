#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "platform/geometry.h"

namespace quil {

/// Event types, mouse buttons and other numbers of the Quartz event services (CGEventTypes.h).
inline constexpr std::uint32_t kEventLeftMouseDown = 1;
inline constexpr std::uint32_t kEventLeftMouseUp = 2;
inline constexpr std::uint32_t kEventRightMouseDown = 3;
inline constexpr std::uint32_t kEventRightMouseUp = 4;
inline constexpr std::uint32_t kEventMouseMoved = 5;
inline constexpr std::uint32_t kEventLeftMouseDragged = 6;
inline constexpr std::uint32_t kEventRightMouseDragged = 7;
inline constexpr std::uint32_t kEventKeyDown = 10;
inline constexpr std::uint32_t kEventKeyUp = 11;
inline constexpr std::uint32_t kEventScrollWheel = 22;
/// Of every button but the left and the right one.
inline constexpr std::uint32_t kEventOtherMouseDown = 25;
inline constexpr std::uint32_t kEventOtherMouseUp = 26;
inline constexpr std::uint32_t kEventOtherMouseDragged = 27;

inline constexpr std::uint32_t kMouseButtonLeft = 0;
inline constexpr std::uint32_t kMouseButtonRight = 1;
inline constexpr std::uint32_t kMouseButtonCenter = 2;
/// A field of mouse events: 1 for a single click, 2 for the second click of a double click, ….
inline constexpr std::uint32_t kMouseEventClickState = 1;
inline constexpr std::uint32_t kScrollEventUnitLine = 1;
inline constexpr std::int32_t kEventSourceStateHidSystemState = 1;
inline constexpr std::uint32_t kHidEventTap = 0;

/// Modifier flags of events: Caps Lock, Shift, Control, Option and Command.
inline constexpr std::uint64_t kEventFlagMaskAlphaShift = 0x10000;
inline constexpr std::uint64_t kEventFlagMaskShift = 0x20000;
inline constexpr std::uint64_t kEventFlagMaskControl = 0x40000;
inline constexpr std::uint64_t kEventFlagMaskAlternate = 0x80000;
inline constexpr std::uint64_t kEventFlagMaskCommand = 0x100000;

/// A source of synthetic events, opaque above the backends. It lives for one operation; a backend
/// may hold back key events of a source and deliver them together, in order, by the time that the
/// source is released.
class EventSource {
  public:
    virtual ~EventSource() = default;
};

/// A synthetic event, opaque above the backends.
class PostableEvent {
  public:
    virtual ~PostableEvent() = default;
};
using PostableEventRef = std::unique_ptr<PostableEvent>;

/// Makes synthetic input events and posts them into the system's input stream. Creating returns
/// null on failure. Sources may be null.
class EventPosting {
  public:
    virtual ~EventPosting() = default;

    /// A source in that state (`kEventSourceState…`).
    virtual std::unique_ptr<EventSource> createSource(std::int32_t state) = 0;

    /// An event of that type, of that button for presses, releases and drags. `point` is in global
    /// screen coordinates.
    virtual PostableEventRef createMouseEvent(EventSource* source, std::uint32_t type, Point point,
                                              std::uint32_t button) = 0;
    /// A turn of the wheel by `wheel1` (vertical, up positive) and `wheel2` (horizontal, left
    /// positive) of the unit (`kScrollEventUnit…`); `wheel3` is ignored when `wheelCount` is 2.
    virtual PostableEventRef createScrollWheelEvent(EventSource* source, std::uint32_t units,
                                                    std::uint32_t wheelCount, std::int32_t wheel1,
                                                    std::int32_t wheel2, std::int32_t wheel3) = 0;
    /// `keyCode` is a virtual key code: a physical key of the Mac keyboard, whatever the layout.
    virtual PostableEventRef createKeyboardEvent(EventSource* source, std::uint16_t keyCode,
                                                 bool keyDown) = 0;

    /// Sets where a wheel event happens, in global screen coordinates.
    virtual void setLocation(PostableEvent& event, Point point) = 0;
    /// Replaces the modifier flags of a keyboard or mouse event. On a platform whose mouse events
    /// carry no flags of their own, those of a mouse event have no effect.
    virtual void setFlags(PostableEvent& event, std::uint64_t flags) = 0;
    /// Sets a field of a mouse event (`kMouseEventClickState`). Without effect on a platform that
    /// counts clicks by their times.
    virtual void setIntegerValueField(PostableEvent& event, std::uint32_t field,
                                      std::int64_t value) = 0;
    /// Comes before the presses of a series of clicks, the first of which counts as the first.
    /// Where programs count clicks by their times, waits until they no longer count an earlier one
    /// in: one of the same button nearby, or anywhere when `count` is more than 1. Bounded.
    virtual void beginClicks(Point /*at*/, std::uint32_t /*button*/, int /*count*/) {}
    /// Makes a keyboard event type this text instead of its key.
    virtual void keyboardSetUnicodeString(PostableEvent& event, std::u16string_view text) = 0;

    /// Puts the event into the input stream at that location (`kHidEventTap`). Nothing says whether
    /// it arrives.
    virtual void post(std::uint32_t tapLocation, const PostableEvent& event) = 0;
};

}  // namespace quil
