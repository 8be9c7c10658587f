#pragma once

#include "runtime/request.h"
#include "runtime/runtime.h"

namespace quil {

/// Runs the handler of the request's method, or responds that the method is unknown. Writes exactly
/// one response.
void dispatch(Runtime& runtime, const Request& request);

}  // namespace quil
