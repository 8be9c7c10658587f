#include "platform/simulated/scenario/desktop_members.h"

#include <set>
#include <utility>

#include "platform/pasteboard.h"
#include "platform/simulated/desktop.h"
#include "platform/simulated/scenario/changes.h"
#include "platform/simulated/scenario/values.h"

namespace quil::simulated {
namespace {

Step readPermissions(const Node& node, Names&) {
    using State = SimulatedDesktop::PermissionState;
    constexpr std::pair<std::string_view, bool State::*> kPermissions[] = {
        {"accessibility", &State::accessibility},
        {"screenRecording", &State::screenRecording},
        {"inputMonitoring", &State::inputMonitoring},
        {"grantsInputMonitoring", &State::grantsInputMonitoring},
    };
    std::vector<std::string_view> known;
    std::vector<std::pair<bool State::*, bool>> values;
    for (const auto& [name, permission] : kPermissions) {
        known.push_back(name);
        if (const auto value = node.find(name)) values.emplace_back(permission, value->boolean());
    }
    node.allowOnly(known);
    return [values](Building& building) {
        for (const auto& [permission, value] : values) {
            building.desktop.permissions.*permission = value;
        }
    };
}

SimulatedDesktop::Display readDisplay(const Node& node) {
    node.allowOnly({"id", "bounds", "name"});
    const auto name = node.find("name");
    return {node.require("id").unsigned32(), node.require("bounds").rect(),
            name ? std::optional(name->string()) : std::nullopt};
}

Step readDisplays(const Node& node, Names&) {
    std::vector<SimulatedDesktop::Display> displays;
    std::set<std::uint32_t> ids;
    for (const Node& entry : node.list()) {
        displays.push_back(readDisplay(entry));
        if (!ids.insert(displays.back().id).second) entry.require("id").fail("given twice");
    }
    return [displays](Building& building) { building.desktop.displays = displays; };
}

Step readSleepingMainDisplay(const Node& node, Names&) {
    return [display = readDisplay(node)](Building& building) {
        building.desktop.sleepingMainDisplay = display;
    };
}

Step readExtraScreens(const Node& node, Names&) {
    std::vector<Screen> screens;
    for (const Node& entry : node.list()) {
        entry.allowOnly({"number", "name"});
        Screen screen{.screenNumber = {}, .localizedName = entry.require("name").string()};
        if (const auto number = entry.find("number")) screen.screenNumber = number->unsigned32();
        screens.push_back(std::move(screen));
    }
    return [screens](Building& building) { building.desktop.extraScreens = screens; };
}

Step readApplications(const Node& node, Names& names) {
    std::vector<Step> applications;
    std::set<std::int32_t> pids;
    for (const Node& entry : node.list()) {
        applications.push_back(readApplication(entry, names));
        if (!pids.insert(readProcessId(entry)).second) entry.require("pid").fail("given twice");
    }
    return [applications](Building& building) {
        for (const Step& build : applications) build(building);
    };
}

Step readOwnerlessWindows(const Node& node, Names& names) {
    std::vector<std::function<void(Building&, Application*)>> windows;
    for (const Node& entry : node.list()) windows.push_back(readWindow(entry, names));
    return [windows](Building& building) {
        for (const auto& build : windows) build(building, nullptr);
    };
}

std::vector<std::string> readIds(const Node& node, Kind kind, Names& names) {
    std::vector<std::string> ids;
    for (const Node& entry : node.oneOrMore()) ids.push_back(names.refer(entry, kind));
    return ids;
}

Step readRemove(const Node& node, Names& names) {
    return [ids = readIds(node, Kind::element, names)](Building& building) {
        for (const std::string& id : ids) {
            Element* element = building.desktop.find(id);
            if (auto* application = dynamic_cast<Application*>(element)) {
                application->quit();
            } else if (element) {
                element->remove();
            }
        }
    };
}

Step readStacking(const Node& node, Names& names) {
    return [ids = readIds(node, Kind::window, names)](Building& building) {
        for (auto id = ids.rbegin(); id != ids.rend(); ++id) {
            if (Element* window = building.desktop.find(*id)) {
                building.desktop.raise(static_cast<Window&>(*window));
            }
        }
    };
}

Step readFrontmost(const Node& node, Names& names) {
    const std::string id = node.isNull() ? "" : names.refer(node, Kind::application);
    return [id](Building& building) {
        Element* application = id.empty() ? nullptr : building.desktop.find(id);
        if (application || id.empty()) {
            building.desktop.frontmost(static_cast<Application*>(application));
        }
    };
}

Step readWindowList(const Node& node, Names& names) {
    if (node.isNull()) {
        return [](Building& building) { building.desktop.windowListOverride.reset(); };
    }
    return [value = readValue(node, names)](Building& building) {
        building.desktop.windowListOverride = value.get(building.desktop);
    };
}

Step readPasteboard(const Node& node, Names&) {
    std::map<std::string, std::string, std::less<>> contents;
    if (node.isString()) {
        contents.emplace(kPasteboardTypeString, node.string());
    } else if (!node.isNull()) {
        for (const auto& [type, text] : node.members()) contents.emplace(type, text.string());
    }
    return [contents](Building& building) { building.desktop.pasteboard = contents; };
}

Step readApplicationFolders(const Node& node, Names&) {
    return [folders = node.strings()](Building& building) {
        building.desktop.applicationFolders = folders;
    };
}

Step readUnlistableFolders(const Node& node, Names&) {
    return [folders = node.strings()](Building& building) {
        building.desktop.unlistableFolders = {folders.begin(), folders.end()};
    };
}

Step readBundleSuffix(const Node& node, Names&) {
    return [suffix = node.string()](Building& building) { building.desktop.bundleSuffix = suffix; };
}

Step readPostedInputActs(const Node& node, Names&) {
    return [acts = node.boolean()](Building& building) { building.desktop.postedInputActs = acts; };
}

}  // namespace

const std::vector<DesktopMember>& desktopMembers() {
    static const std::vector<DesktopMember> members = {
        {"permissions", readPermissions},
        {"displays", readDisplays},
        {"sleepingMainDisplay", readSleepingMainDisplay},
        {"extraScreens", readExtraScreens},
        {"remove", readRemove},
        {"applications", readApplications},
        {"windows", readOwnerlessWindows},
        {"stacking", readStacking},
        {"frontmost", readFrontmost},
        {"windowList", readWindowList},
        {"pasteboard", readPasteboard},
        {"applicationFolders", readApplicationFolders},
        {"unlistableFolders", readUnlistableFolders},
        {"bundleSuffix", readBundleSuffix},
        {"bundles", readBundles},
        {"postedInputActs", readPostedInputActs},
        {"rules", readRules},
        {"user", readUser},
    };
    return members;
}

}  // namespace quil::simulated
