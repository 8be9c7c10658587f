#pragma once

#include <string_view>

#include "platform/linux/x11/input/keyboard_session.h"

namespace quil::linux_platform {

/// Types the text, character for character, whatever the keyboard layout. Characters that it lacks
/// are put on keys that have no meaning; these mean nothing again afterwards. A key's meaning is
/// changed only when the program that gets the keys has processed those before; for one that hangs
/// it is not changed any more, and what would need that is left out.
void typeText(KeyboardSession& session, std::u16string_view text);

}  // namespace quil::linux_platform
