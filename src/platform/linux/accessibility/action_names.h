#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/atspi/roles.h"

namespace quil::linux_platform {

inline constexpr std::string_view kScrollUpByPage = "AXScrollUpByPage";
inline constexpr std::string_view kScrollDownByPage = "AXScrollDownByPage";

/// The names that a toolkit's actions have for hosts, one per action and in their order: what a
/// plain click triggers is "AXPress", the others are "AX" and their name in camel case. An action
/// whose name is taken by one before it keeps its index under an empty name.
///
/// Browsers offer an action for whatever a click does on every element, plain text included; only
/// of what people click at is it a press.
std::vector<std::string> protocolNames(const std::vector<std::string>& toolkitNames,
                                       AtspiRole role);

}  // namespace quil::linux_platform
