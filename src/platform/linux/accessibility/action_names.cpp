#include "platform/linux/accessibility/action_names.h"

#include <algorithm>
#include <iterator>

namespace quil::linux_platform {
namespace {

/// What toolkits call the action that a plain click triggers; of several, the first here is meant.
constexpr std::string_view kPressNames[] = {
    "click", "press", "push",    "activate", "toggle",   "jump",  "select",
    "open",  "check", "uncheck", "switch",   "unselect", "cycle",
};

bool isLetterOrDigit(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           static_cast<unsigned char>(c) >= 0x80;
}

char upper(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

/// "expand or contract" as "AXExpandOrContract".
std::string camelCased(std::string_view name) {
    std::string result = "AX";
    bool beginsWord = true;
    for (const char c : name) {
        if (isLetterOrDigit(c)) result += beginsWord ? upper(c) : c;
        beginsWord = !isLetterOrDigit(c);
    }
    return result;
}

/// What browsers call whatever a click does.
constexpr std::string_view kDefaultName = "dodefault";

bool isClickedAt(AtspiRole role) {
    switch (role) {
        case AtspiRole::checkBox:
        case AtspiRole::checkMenuItem:
        case AtspiRole::comboBox:
        case AtspiRole::link:
        case AtspiRole::listItem:
        case AtspiRole::menu:
        case AtspiRole::menuItem:
        case AtspiRole::pageTab:
        case AtspiRole::pushButton:
        case AtspiRole::radioButton:
        case AtspiRole::radioMenuItem:
        case AtspiRole::toggleButton:
        case AtspiRole::treeItem:
            return true;
        default:
            return false;
    }
}

/// How likely the name is that of a press: 0 is the most likely. At least `kNoPress` when it is
/// none.
constexpr std::size_t kNoPress = std::size(kPressNames) + 1;
std::size_t pressRank(std::string_view name, AtspiRole role) {
    std::string lowered(name);
    std::transform(lowered.begin(), lowered.end(), lowered.begin(), lower);
    if (lowered == kDefaultName) return isClickedAt(role) ? kNoPress - 1 : kNoPress;
    const auto* found = std::find(std::begin(kPressNames), std::end(kPressNames), lowered);
    return found == std::end(kPressNames)
               ? kNoPress
               : static_cast<std::size_t>(found - std::begin(kPressNames));
}

}  // namespace

std::vector<std::string> protocolNames(const std::vector<std::string>& toolkitNames,
                                       AtspiRole role) {
    std::vector<std::string> names;
    names.reserve(toolkitNames.size());
    for (const std::string& name : toolkitNames) names.push_back(camelCased(name));
    const auto press = std::min_element(
        toolkitNames.begin(), toolkitNames.end(),
        [role](const auto& a, const auto& b) { return pressRank(a, role) < pressRank(b, role); });
    if (press != toolkitNames.end() && pressRank(*press, role) < kNoPress) {
        names[static_cast<std::size_t>(press - toolkitNames.begin())] = "AXPress";
    }
    for (auto name = names.begin(); name != names.end(); ++name) {
        const bool isTaken = std::find(names.begin(), name, *name) != name;
        if (isTaken || *name == "AX") name->clear();
    }
    return names;
}

}  // namespace quil::linux_platform
