#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "platform/value.h"

namespace quil {

/// Result codes of the accessibility calls (AXError, AXError.h).
inline constexpr std::int32_t kAxSuccess = 0;
inline constexpr std::int32_t kAxFailure = -25200;
inline constexpr std::int32_t kAxIllegalArgument = -25201;
inline constexpr std::int32_t kAxInvalidUIElement = -25202;
inline constexpr std::int32_t kAxCannotComplete = -25204;
inline constexpr std::int32_t kAxAttributeUnsupported = -25205;
inline constexpr std::int32_t kAxActionUnsupported = -25206;
inline constexpr std::int32_t kAxNotImplemented = -25208;
inline constexpr std::int32_t kAxApiDisabled = -25211;
inline constexpr std::int32_t kAxNoValue = -25212;

/// What a walk over a tree is about to read, so that a backend may fetch it in batches.
struct ObservationPlan {
    /// Where the walk starts.
    ElementRef root;
    /// The attributes that the walk reads of every element, by name ("AXChildren" included).
    std::vector<std::string_view> attributes;
    /// Whether the walk reads every element's action names.
    bool actionNames = false;
    /// The walk visits at most that many elements, depth first. Of any child list it needs at most
    /// one entry more than this, to see that it was cut.
    std::int64_t maximumNodes = 0;
    /// The walk visits elements whose depth is below this; the root has depth 0.
    int maximumDepth = 0;
};

/// While it lives, reads of elements below its root may be served from what the backend fetched
/// when it began, and child lists may end one entry after the plan's node limit. Calls return just
/// as they would without it, only sooner; nothing that was fetched outlives it.
class Observation {
  public:
    virtual ~Observation() = default;
};

/// Notices, while it lives, what may be a change: of an application's tree, or of which application
/// or window is in front.
class ChangeWatch {
  public:
    virtual ~ChangeWatch() = default;

    /// Waits until something has been noticed since the last call (or since the watch began), for
    /// that many microseconds at the most. Whether something has. The platform may report what is
    /// no change, and may miss one that an application keeps to itself.
    virtual bool wait(std::uint64_t microseconds) = 0;
};

/// Other applications' element trees. Each call is a round trip to the application unless an
/// observation is in progress; a backend bounds the wait. A call that succeeds may still give no
/// value; one that fails leaves its result alone.
class Accessibility {
  public:
    virtual ~Accessibility() = default;

    /// The element of the application with that process id. Never fails: the element of a process
    /// that is no application fails every later call.
    virtual ElementRef createApplication(std::int32_t pid) = 0;
    /// Reads one attribute. Returns 0, or an error code.
    virtual std::int32_t copyAttributeValue(const ElementRef& element, std::string_view attribute,
                                            std::optional<Value>& value) = 0;
    /// Reads the names of the element's actions, a list of strings. Returns 0, or an error code.
    virtual std::int32_t copyActionNames(const ElementRef& element,
                                         std::optional<Value>& names) = 0;
    /// Performs an action. Returns 0, or an error code.
    virtual std::int32_t performAction(const ElementRef& element, std::string_view action) = 0;
    /// Sets an attribute. Returns 0, or an error code.
    virtual std::int32_t setAttributeValue(const ElementRef& element, std::string_view attribute,
                                           const Value& value) = 0;

    /// Announces a walk. At most one observation lives at a time. A backend that has no use for the
    /// announcement returns null.
    virtual std::unique_ptr<Observation> beginObservation(const ObservationPlan& plan) = 0;

    /// Watches the application with that process id (0: none, only what is in front). Null when the
    /// platform cannot notify.
    virtual std::unique_ptr<ChangeWatch> watchChanges(std::int32_t pid) = 0;
};

}  // namespace quil
