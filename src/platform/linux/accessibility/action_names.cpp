#include "platform/linux/accessibility/action_names.h"

#include <algorithm>
#include <iterator>

namespace quil::linux_platform {
namespace {

/// What toolkits call the action that a plain click triggers; of several, the first here is meant.
constexpr std::string_view kPressNames[] = {
    "click", "press", "push", "activate", "toggle", "jump", "select", "open", "check", "uncheck",
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

std::size_t pressRank(std::string_view name) {
    std::string lowered(name);
    std::transform(lowered.begin(), lowered.end(), lowered.begin(), lower);
    const auto* found = std::find(std::begin(kPressNames), std::end(kPressNames), lowered);
    return static_cast<std::size_t>(found - std::begin(kPressNames));
}

}  // namespace

std::vector<std::string> protocolNames(const std::vector<std::string>& toolkitNames) {
    std::vector<std::string> names;
    for (const std::string& name : toolkitNames) names.push_back(camelCased(name));
    const auto press =
        std::min_element(toolkitNames.begin(), toolkitNames.end(),
                         [](const auto& a, const auto& b) { return pressRank(a) < pressRank(b); });
    if (press != toolkitNames.end() && pressRank(*press) < std::size(kPressNames)) {
        names[static_cast<std::size_t>(press - toolkitNames.begin())] = "AXPress";
    }
    for (auto name = names.begin(); name != names.end(); ++name) {
        const bool isTaken = std::find(names.begin(), name, *name) != name;
        if (isTaken || *name == "AX") name->clear();
    }
    return names;
}

std::vector<std::string> protocolActionNames(const std::vector<std::string>& toolkitNames) {
    std::vector<std::string> names = protocolNames(toolkitNames);
    std::erase(names, "");
    return names;
}

}  // namespace quil::linux_platform
