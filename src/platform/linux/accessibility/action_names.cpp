#include "platform/linux/accessibility/action_names.h"

#include <algorithm>
#include <iterator>

namespace quil::linux_platform {
namespace {

/// What toolkits call the action that a plain click triggers; of several, the first here is meant.
constexpr std::string_view kPressNames[] = {
    "click", "press", "push",    "activate", "toggle",   "jump",  "select",
    "open",  "check", "uncheck", "switch",   "unselect", "cycle", "sort",
};

/// Where a click moves the cursor, the others mean something else (such as what is selected).
constexpr std::string_view kFieldPressNames[] = {"click", "press", "push", "activate"};

/// Of what is switched on and off: Qt Quick replies that it has pressed, and does nothing.
constexpr std::string_view kSwitchPressNames[] = {"toggle"};

/// Of what opens something when it is clicked at, such as combo boxes and menus.
constexpr std::string_view kOpenerPressNames[] = {
    "togglepopup", "showmenu", "expand", "collapse", "close",
};

/// What browsers call whatever a click does.
constexpr std::string_view kDefaultName = "dodefault";

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

bool isSwitch(AtspiRole role) {
    switch (role) {
        case AtspiRole::checkBox:
        case AtspiRole::checkMenuItem:
        case AtspiRole::radioButton:
        case AtspiRole::radioMenuItem:
        case AtspiRole::toggleButton:
            return true;
        default:
            return false;
    }
}

bool isClickedAt(AtspiRole role) {
    switch (role) {
        case AtspiRole::comboBox:
        case AtspiRole::link:
        case AtspiRole::listItem:
        case AtspiRole::menu:
        case AtspiRole::menuItem:
        case AtspiRole::pageTab:
        case AtspiRole::pushButton:
        case AtspiRole::pushButtonMenu:
        case AtspiRole::treeItem:
            return true;
        default:
            return isSwitch(role);
    }
}

/// The names of a press, those that are meant first in front.
std::vector<std::string_view> pressNames(AtspiRole role) {
    std::vector<std::string_view> names;
    const auto add = [&](const auto& more) {
        for (const std::string_view name : more) names.push_back(name);
    };
    if (isTextField(role) || role == AtspiRole::spinButton) {
        add(kFieldPressNames);
        return names;
    }
    if (isSwitch(role)) add(kSwitchPressNames);
    add(kPressNames);
    if (!isClickedAt(role)) return names;
    add(kOpenerPressNames);
    names.push_back(kDefaultName);
    return names;
}

/// Which of an element's actions is the press; none when it is not below the number of names.
std::size_t pressAmong(const std::vector<std::string>& toolkitNames, AtspiRole role) {
    std::vector<std::string> lowered = toolkitNames;
    for (std::string& name : lowered) {
        std::transform(name.begin(), name.end(), name.begin(), lower);
    }
    for (const std::string_view press : pressNames(role)) {
        const auto found = std::find(lowered.begin(), lowered.end(), press);
        if (found != lowered.end()) return static_cast<std::size_t>(found - lowered.begin());
    }
    // LibreOffice has no names for what its menus do.
    const bool isUnnamed = lowered.size() == 1 && lowered.front().empty();
    return isUnnamed && isClickedAt(role) ? 0 : lowered.size();
}

}  // namespace

std::vector<std::string> protocolNames(const std::vector<std::string>& toolkitNames,
                                       AtspiRole role) {
    std::vector<std::string> names;
    names.reserve(toolkitNames.size());
    for (const std::string& name : toolkitNames) names.push_back(camelCased(name));
    const std::size_t press = pressAmong(toolkitNames, role);
    if (press < names.size()) names[press] = "AXPress";
    // Those who have actions for it scroll by pages.
    for (std::string& name : names) {
        if (name == "AXScrollUp") name = kScrollUpByPage;
        if (name == "AXScrollDown") name = kScrollDownByPage;
    }
    for (auto name = names.begin(); name != names.end(); ++name) {
        const bool isTaken = std::find(names.begin(), name, *name) != name;
        if (isTaken || *name == "AX") name->clear();
    }
    return names;
}

}  // namespace quil::linux_platform
