#pragma once

#include <cstdint>
#include <string>

#include "accessibility/ax_snapshot.h"
#include "platform/accessibility.h"

namespace quil {

/// An application's tree as plain text, from its focused window down (from the application when no
/// window has focus): one line per element, depth first, with its role, its texts and its subrole
/// in parentheses. Ends silently at the limits: so many elements, so many characters, each line
/// feed included. Observes without touching the last snapshot, so tokens stay valid.
std::string axText(Accessibility& accessibility, std::int32_t pid,
                   std::int64_t maximumNodes = kAxMaximumNodes,
                   std::int64_t maximumChars = kAxMaximumChars);

}  // namespace quil
