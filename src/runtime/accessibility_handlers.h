#pragma once

#include "runtime/runtime.h"

/// The methods that observe the frontmost application's tree and act on its elements by token. All
/// need the Accessibility permission.
namespace quil {

/// `desktop_ax_get_state`: the tree, or the part of it below "element".
void handleAxGetState(Runtime& runtime, std::int64_t id, const Parameters& parameters);
/// `desktop_read_value`: the whole value of one element.
void handleReadValue(Runtime& runtime, std::int64_t id, const Parameters& parameters);
/// `desktop_ax_action`: invoke, focus, set_value or scroll.
void handleAxAction(Runtime& runtime, std::int64_t id, const Parameters& parameters);

}  // namespace quil
