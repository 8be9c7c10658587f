#pragma once

#include <string_view>

#include "platform/clock.h"
#include "platform/event_posting.h"
#include "platform/pasteboard.h"

/// Synthetic keyboard input. Nothing is reported: what cannot be posted is left out.
namespace quil {

/// Presses and releases one key, with its modifiers as flags on both events. A combination that
/// names no known key posts nothing.
void keypress(EventPosting& events, std::string_view combo);

/// Types the text (UTF-8) as Unicode keyboard events of at most 20 UTF-16 units, never splitting a
/// surrogate pair.
void typeText(EventPosting& events, std::string_view text);

/// Puts the text on the pasteboard, presses command-V, gives the application 250 ms to take it and
/// puts the pasteboard's previous text back, or leaves it empty when there was none. Blocks
/// meanwhile.
void pasteText(EventPosting& events, Pasteboard& pasteboard, Clock& clock, std::string_view text);

}  // namespace quil
