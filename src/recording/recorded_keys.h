#pragma once

#include <optional>
#include <string>

#include "platform/event_taps.h"

namespace quil {

/// The text that a key press types: its characters, unless Command, Control or Option is held, it
/// has none, or a control character is among them.
std::optional<std::string> plainText(const TappedEvent& keyDown);

/// The key press as a combination that `keypress` takes, by key code: "cmd+shift+keycode-0".
std::string keyCombination(const TappedEvent& keyDown);

}  // namespace quil
