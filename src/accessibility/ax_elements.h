#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "accessibility/ax_error.h"
#include "accessibility/ax_snapshot.h"
#include "platform/platform.h"
#include "target/capture_target.h"

/// Operations on elements named by the tokens of the last snapshot. Each first observes the
/// frontmost application's tree again, which becomes the last snapshot, and throws an `AxError`
/// when the tree has changed or the token names nothing in it.
namespace quil {

/// A token's element and its record in the fresh observation, with the target it belongs to.
struct ResolvedElement {
    ElementRef element;
    AxNode node;
    CaptureTarget target;
};

/// What an operation on an element reports: the element as it was before the operation.
struct AxOutcome {
    CaptureTarget target;
    AxNode node;
};

struct AxValueOutcome {
    CaptureTarget target;
    AxNode node;
    /// The whole value; absent when the element has no text or number as its value.
    std::optional<std::string> value;
};

/// Throws noSnapshot, unsupported (no frontmost application), staleSnapshot or unknownToken.
ResolvedElement currentAxElement(Platform& platform, LastAxSnapshot& lastAxSnapshot,
                                 const std::string& token);

/// The records of `root` and of everything below it, in order; absent when no record has that
/// token.
std::optional<std::vector<AxNode>> axSubtreeNodes(const std::vector<AxNode>& nodes,
                                                  const std::string& root);

/// The centre of the element's bounds, read now, in global screen coordinates. Throws as
/// `currentAxElement` does, and unsupported for an element without bounds.
Point axElementCenter(Platform& platform, LastAxSnapshot& lastAxSnapshot, const std::string& token);

/// "AXError " and the code.
std::string axErrorCode(std::int32_t code);

/// Performs "invoke", "focus", "set_value" (needs `value`) or "scroll" (by `amount` pages, down
/// when positive or absent, 1 to 10 of them). Throws as `currentAxElement` does, unsupported for
/// another action or a missing value, and failed when the platform refuses.
AxOutcome performAxAction(Platform& platform, LastAxSnapshot& lastAxSnapshot,
                          const std::string& token, const std::string& action,
                          const std::optional<std::string>& value,
                          std::optional<std::int64_t> amount);

/// The element's value, read now. Throws as `currentAxElement` does.
AxValueOutcome readAxValue(Platform& platform, LastAxSnapshot& lastAxSnapshot,
                           const std::string& token);

/// The short form of a record that results carry: token, role and name.
Json elementJson(const AxNode& node);

}  // namespace quil
