#pragma once

#include <optional>
#include <string_view>

#include "platform/geometry.h"
#include "runtime/request.h"
#include "runtime/runtime.h"

/// Where a request wants to act, in global screen coordinates.
namespace quil {

/// The global point of a point object; absent when the member is no object or does not resolve.
std::optional<Point> pointMember(Runtime& runtime, const Parameters& parameters,
                                 std::string_view key);

/// The centre of "element" when it is named, else "point". Throws an `AxError` for an element that
/// cannot be resolved.
std::optional<Point> elementOrPoint(Runtime& runtime, const Parameters& parameters);

}  // namespace quil
