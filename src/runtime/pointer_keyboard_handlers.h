#pragma once

#include <cstdint>

#include "runtime/runtime.h"

/// The methods that act on the screen with synthetic input. All need the Accessibility permission,
/// check their parameters before anything is posted, and answer a result once the checks pass.
namespace quil {

/// `desktop_click`: one click on "element" or at "point".
void handleClick(Runtime& runtime, std::int64_t id, const Parameters& parameters);
/// `desktop_double_click`: the same, twice.
void handleDoubleClick(Runtime& runtime, std::int64_t id, const Parameters& parameters);
/// `desktop_move`: the pointer goes to "point".
void handleMove(Runtime& runtime, std::int64_t id, const Parameters& parameters);
/// `desktop_scroll`: turns the wheel by "amount" lines over "element" or at "point".
void handleScroll(Runtime& runtime, std::int64_t id, const Parameters& parameters);
/// `desktop_type`: types "text", after the focus or a click has gone to "element" or "point".
void handleType(Runtime& runtime, std::int64_t id, const Parameters& parameters);
/// `desktop_paste`: the same by way of the pasteboard, which gets its text back.
void handlePaste(Runtime& runtime, std::int64_t id, const Parameters& parameters);
/// `desktop_keypress`: presses the combination "combo".
void handleKeypress(Runtime& runtime, std::int64_t id, const Parameters& parameters);
/// `desktop_drag`: drags with the left button from "from" to "to".
void handleDrag(Runtime& runtime, std::int64_t id, const Parameters& parameters);

}  // namespace quil
