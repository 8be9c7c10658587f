#pragma once

#include <cstdint>

#include "runtime/runtime.h"

/// The methods that act on the screen with synthetic input. All need the Accessibility permission,
/// check their parameters before anything is posted, and answer a result once the checks pass.
namespace quil {

void handleClick(Runtime& runtime, std::int64_t id, const Parameters& parameters);
void handleDoubleClick(Runtime& runtime, std::int64_t id, const Parameters& parameters);
void handleMove(Runtime& runtime, std::int64_t id, const Parameters& parameters);
void handleScroll(Runtime& runtime, std::int64_t id, const Parameters& parameters);
void handleType(Runtime& runtime, std::int64_t id, const Parameters& parameters);
void handlePaste(Runtime& runtime, std::int64_t id, const Parameters& parameters);
void handleKeypress(Runtime& runtime, std::int64_t id, const Parameters& parameters);
void handleDrag(Runtime& runtime, std::int64_t id, const Parameters& parameters);

}  // namespace quil
