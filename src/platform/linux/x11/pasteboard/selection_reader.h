#pragma once

#include <optional>
#include <string>

#include "platform/linux/x11/pasteboard/selection_window.h"

namespace quil::linux_platform {

/// The text of a selection that another client owns, as valid UTF-8; nothing when it has no text or
/// has not begun to hand it over within a second. A text that comes in parts may take longer, as
/// long as it keeps coming.
std::optional<std::string> readSelection(SelectionWindow& window, xcb_atom_t selection);

}  // namespace quil::linux_platform
