#include "screen/windows.h"

#include <limits>
#include <optional>

namespace quil {
namespace {

std::optional<std::int64_t> integerMember(const Value::Dictionary& window, std::string_view key) {
    const Value* member = findMember(window, key);
    return member ? member->integer() : std::nullopt;
}

std::string stringMember(const Value::Dictionary& window, std::string_view key) {
    const std::string* member = findString(window, key);
    return member ? *member : std::string();
}

std::optional<RunningApplication> applicationOf(Workspace& workspace, std::int64_t pid) {
    using Limits = std::numeric_limits<std::int32_t>;
    if (pid < Limits::min() || pid > Limits::max()) return {};
    return workspace.runningApplicationWithProcessIdentifier(static_cast<std::int32_t>(pid));
}

Json windowEntry(Workspace& workspace, const Value::Dictionary& window) {
    const std::int64_t pid = integerMember(window, kWindowOwnerPid).value_or(0);
    Json entry = {{"id", integerMember(window, kWindowNumber).value_or(0)},
                  {"name", stringMember(window, kWindowName)},
                  {"owner", stringMember(window, kWindowOwnerName)},
                  {"pid", pid}};
    const Value* bounds = findMember(window, kWindowBounds);
    if (bounds && bounds->dictionary()) entry["bounds"] = jsonFromValue(*bounds);
    if (const auto application = applicationOf(workspace, pid)) {
        setOptional(entry, "bundleIdentifier", application->bundleIdentifier);
        setOptional(entry, "executablePath", application->executablePath);
    }
    return entry;
}

}  // namespace

Json windowsList(WindowList& windowList, Workspace& workspace) {
    Json entries = Json::array();
    const auto windows = windowList.copyWindowInfo(
        kWindowListOptionOnScreenOnly | kWindowListExcludeDesktopElements, 0);
    if (!windows || !windows->list()) return entries;
    const Value::List& list = *windows->list();
    for (const Value& window : list) {
        if (!window.dictionary()) return Json::array();
    }
    for (const Value& window : list) {
        const Value::Dictionary& members = *window.dictionary();
        if (integerMember(members, kWindowLayer).value_or(0) != 0) continue;
        entries.push_back(windowEntry(workspace, members));
    }
    return entries;
}

}  // namespace quil
