#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/geometry.h"

namespace quil {

/// Numbers of the Quartz event services for taps (CGEventTypes.h). Event types and flags are those
/// of event_posting.h.
inline constexpr std::uint32_t kSessionEventTap = 1;
inline constexpr std::uint32_t kHeadInsertEventTap = 0;
inline constexpr std::uint32_t kEventTapOptionListenOnly = 1;
inline constexpr std::uint32_t kEventTapDisabledByTimeout = 0xFFFFFFFE;
inline constexpr std::uint32_t kEventTapDisabledByUserInput = 0xFFFFFFFF;
inline constexpr std::uint32_t kKeyboardEventKeycode = 9;
inline constexpr std::uint32_t kScrollWheelEventDeltaAxis1 = 11;

/// An event that a tap delivers; valid during the callback only.
class TappedEvent {
  public:
    virtual ~TappedEvent() = default;

    /// Where the pointer was, in global screen coordinates.
    virtual Point location() const = 0;
    /// Nanoseconds since the system started (the base of `Clock::systemUptime`).
    virtual std::uint64_t timestamp() const = 0;
    /// `kEventFlagMask…` of the modifiers that are held or locked.
    virtual std::uint64_t flags() const = 0;
    /// `kKeyboardEventKeycode`: the virtual key code. `kScrollWheelEventDeltaAxis1`: lines
    /// scrolled vertically, up positive. 0 for any other field.
    virtual std::int64_t integerValueField(std::uint32_t field) const = 0;
    /// What the key types; nothing when the event cannot be converted to a key event with
    /// characters.
    virtual std::optional<std::string> characters() const = 0;
};

/// Called on the thread whose run loop holds the tap's source; that thread keeps a reference to the
/// tap for as long as it runs the loop. `type` is an event type, or one of the two "disabled"
/// notifications, for which the event has no content.
using EventTapCallback = std::function<void(std::uint32_t type, const TappedEvent& event)>;

/// A tap, opaque above the backends.
class EventTap {
  public:
    virtual ~EventTap() = default;
};
using EventTapRef = std::shared_ptr<EventTap>;

/// A tap's source of events for a run loop, opaque above the backends.
class RunLoopSource {
  public:
    virtual ~RunLoopSource() = default;
};
using RunLoopSourceRef = std::shared_ptr<RunLoopSource>;

/// A thread's run loop, opaque above the backends.
class RunLoop {
  public:
    virtual ~RunLoop() = default;
};
using RunLoopRef = std::shared_ptr<RunLoop>;

/// Event taps, and the run loops that serve them. All operations may be called from any thread and
/// in any order; operations on an invalidated tap or source do nothing.
class EventTaps {
  public:
    virtual ~EventTaps() = default;

    /// A new tap, enabled but delivering only once its source is in a running run loop. `mask` has
    /// the bit `1 << type` for every event type wanted; the other numbers are those above. Null
    /// when the tap cannot be made.
    virtual EventTapRef createTap(std::uint32_t location, std::uint32_t placement,
                                  std::uint32_t options, std::uint64_t mask,
                                  EventTapCallback callback) = 0;
    /// Lets the tap deliver events, or has it drop them.
    virtual void enableTap(const EventTapRef& tap, bool enable) = 0;
    /// Ends the tap: once this has returned no callback begins.
    virtual void invalidateTap(const EventTapRef& tap) = 0;
    /// Waits, bounded, until earlier events have been delivered, which a backend may hold back
    /// until it knows whether a secret is typed. Does nothing where none are held back.
    virtual void flushTap(const EventTapRef&) {}
    /// A new source for the tap's events; null when it cannot be made.
    virtual RunLoopSourceRef createRunLoopSource(const EventTapRef& tap) = 0;

    /// The calling thread's run loop.
    virtual RunLoopRef currentRunLoop() = 0;
    /// Adds a source in the common modes.
    virtual void addSource(const RunLoopRef& runLoop, const RunLoopSourceRef& source) = 0;
    virtual void removeSource(const RunLoopRef& runLoop, const RunLoopSourceRef& source) = 0;
    /// Ends the source, also where it has not been added yet.
    virtual void invalidateSource(const RunLoopSourceRef& source) = 0;
    /// Runs the calling thread's run loop until it is stopped or has no valid source (any more).
    virtual void runCurrentRunLoop() = 0;
    /// Makes the run loop return if it runs now.
    virtual void stopRunLoop(const RunLoopRef& runLoop) = 0;

    /// Whether key presses are being kept from listeners because a secret is typed.
    virtual bool isSecureEventInputEnabled() = 0;
};

}  // namespace quil
