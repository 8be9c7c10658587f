#pragma once

#include <cstdint>

#include "platform/clock.h"
#include "platform/window_list.h"

namespace quil {

/// Brings the window with that number (the "id" of a window entry) to the front with the focus,
/// from another workspace or minimised as it may be, and waits for it, 2 s at the most. Throws an
/// `AxError`: unsupported when there is no such window, failed when it did not come.
void activateWindow(WindowList& windows, Clock& clock, std::int64_t number);

}  // namespace quil
