#include "platform/simulated/scenario/changes.h"

#include "platform/simulated/desktop.h"
#include "platform/simulated/scenario/desktop_members.h"
#include "platform/simulated/scenario/values.h"

namespace quil::simulated {
namespace {

/// {"update": id, ...}: the members of elements, windows and applications.
Step readUpdateStep(const Node& node, Names& names) {
    const Node id = node.require("update");
    return [id = id.string(), settings = readUpdate(node, id, names)](Building& building) {
        if (Element* element = building.desktop.find(id)) apply(settings, building, *element);
    };
}

/// {"appendText": text, "to": id}: text behind the one that is there.
Step readAppendText(const Node& node, Names& names) {
    node.allowOnly({"appendText", "to"});
    return [text = node.require("appendText").string(),
            id = names.refer(node.require("to"), Kind::element)](Building& building) {
        if (Element* element = building.desktop.find(id)) {
            element->value(element->text("AXValue") + text);
        }
    };
}

Step readMembers(const Node& node, Names& names) {
    std::vector<std::string_view> known = {"update", "appendText"};
    std::vector<Step> steps;
    for (const DesktopMember& member : desktopMembers()) {
        known.push_back(member.name);
        if (const auto value = node.find(member.name)) steps.push_back(member.read(*value, names));
    }
    node.allowOnly(known);
    if (steps.empty()) node.fail("changes nothing");
    return [steps](Building& building) {
        for (const Step& step : steps) step(building);
    };
}

Step readStep(const Node& node, Names& names) {
    if (node.find("update")) return readUpdateStep(node, names);
    if (node.find("appendText")) return readAppendText(node, names);
    return readMembers(node, names);
}

}  // namespace

Change readChange(const Node& node, Names& names) {
    std::vector<Step> steps;
    for (const Node& entry : node.oneOrMore()) steps.push_back(readStep(entry, names));
    return [steps](SimulatedDesktop& desktop) {
        for (const Step& step : steps) {
            Building building(desktop);
            step(building);
            building.finish();
        }
    };
}

}  // namespace quil::simulated
