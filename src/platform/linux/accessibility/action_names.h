#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quil::linux_platform {

inline constexpr std::string_view kScrollUpByPage = "AXScrollUpByPage";
inline constexpr std::string_view kScrollDownByPage = "AXScrollDownByPage";

/// The names that a toolkit's actions have for hosts, one per action and in their order: what a
/// plain click triggers is "AXPress", the others are "AX" and their name in camel case. An action
/// whose name is taken by one before it keeps its place under an empty name.
std::vector<std::string> protocolNames(const std::vector<std::string>& toolkitNames);

/// The same without the empty ones.
std::vector<std::string> protocolActionNames(const std::vector<std::string>& toolkitNames);

}  // namespace quil::linux_platform
