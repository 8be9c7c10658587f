#include "platform/simulated/scenario/scenario.h"

#include "platform/simulated/desktop.h"
#include "platform/simulated/scenario/changes.h"
#include "platform/simulated/scenario/desktop_members.h"

namespace quil::simulated {
namespace {

Change readClock(const Node& node) {
    node.allowOnly({"real", "wallClock", "uptime"});
    const auto real = node.find("real");
    const auto wallClock = node.find("wallClock");
    const auto uptime = node.find("uptime");
    return [isReal = real && real->boolean(),
            wallClock = wallClock ? std::optional(wallClock->seconds()) : std::nullopt,
            uptime = uptime ? std::optional(uptime->seconds())
                            : std::nullopt](SimulatedDesktop& desktop) {
        if (wallClock) desktop.clock().setWallClockAtStart(*wallClock);
        if (uptime) desktop.clock().setUptimeAtStart(*uptime);
        if (isReal) desktop.clock().useRealTime();
    };
}

/// One entry of the script: at a time, or with a request.
Change readScriptEntry(const Node& node, Names& names) {
    node.allowOnly({"at", "request", "do"});
    const auto at = node.find("at");
    const auto request = node.find("request");
    if (at.has_value() == request.has_value()) node.fail("needs \"at\" or \"request\"");
    const Change change = readChange(node.require("do"), names);
    if (at) {
        return [seconds = at->seconds(), change](SimulatedDesktop& desktop) {
            desktop.at(seconds, change);
        };
    }
    return [number = static_cast<int>(request->integer(1, 1'000'000'000)),
            change](SimulatedDesktop& desktop) { desktop.onRequest(number, change); };
}

}  // namespace

Scenario loadScenario(std::string_view text, SimulatedDesktop& desktop) {
    const Json document = parseDocument(text);
    const Node root(document);
    Names names;
    std::vector<std::string_view> known = {"about", "log", "clock", "script"};
    std::vector<Step> steps;
    for (const DesktopMember& member : desktopMembers()) {
        known.push_back(member.name);
        if (const auto value = root.find(member.name)) steps.push_back(member.read(*value, names));
    }
    root.allowOnly(known);
    if (const auto about = root.find("about")) about->string();
    std::vector<Change> changes;
    if (const auto clock = root.find("clock")) changes.push_back(readClock(*clock));
    if (const auto script = root.find("script")) {
        for (const Node& entry : script->list()) changes.push_back(readScriptEntry(entry, names));
    }
    Scenario scenario;
    if (const auto log = root.find("log")) scenario.log = log->string();
    names.check();

    desktop.locked([&] {
        for (const Change& change : changes) change(desktop);
        Building building(desktop);
        for (const Step& step : steps) step(building);
        building.finish();
    });
    return scenario;
}

}  // namespace quil::simulated
