#include "platform/simulated/scenario/changes.h"

#include <algorithm>

#include "platform/simulated/desktop.h"
#include "platform/simulated/rule.h"
#include "platform/simulated/scenario/desktop_members.h"
#include "platform/simulated/scenario/values.h"

namespace quil::simulated {
namespace {

constexpr int kMaximumCount = 1'000'000'000;

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

/// What a rule is about; refuses what no call of that name can be about.
std::string readSubject(const Node& node, CallSubjects subjects, Names& names) {
    switch (subjects) {
        case CallSubjects::none:
            node.fail("all calls of this name are alike");
        case CallSubjects::events:
            if (!eventTypeNamed(node.string())) node.fail("no event type has this name");
            break;
        case CallSubjects::elements:
            names.refer(node, Kind::element);
            break;
        case CallSubjects::others:
            break;
    }
    return node.string();
}

Change readRule(const Node& node, Names& names) {
    node.allowOnly({"call", "about", "nth", "from", "fails", "takes", "does"});
    const Node call = node.require("call");
    Rule rule(call.string());
    if (std::ranges::find(callNames(), call.string()) == callNames().end()) {
        std::string known;
        for (const std::string_view name : callNames()) known += ' ' + std::string(name);
        call.fail("no call of the platform has this name; there are:" + known);
    }
    if (const auto about = node.find("about")) {
        for (const Node& subject : about->oneOrMore()) {
            rule.about(readSubject(subject, subjectsOf(call.string()), names));
        }
    }
    const auto nth = node.find("nth");
    const auto from = node.find("from");
    if (nth && from) from->fail("cannot go with \"nth\"");
    if (nth) rule.nth(static_cast<int>(nth->integer(1, kMaximumCount)));
    if (from) rule.from(static_cast<int>(from->integer(1, kMaximumCount)));
    const auto fails = node.find("fails");
    if (fails && fails->json().is_boolean()) {
        if (!fails->boolean()) fails->fail("must be true or a result code");
        rule.fails();
    } else if (fails) {
        rule.fails(readResultCode(*fails));
    }
    const auto takes = node.find("takes");
    if (takes) rule.takes(takes->seconds());
    const auto does = node.find("does");
    if (does) rule.changes(readChange(*does, names));
    if (!fails && !takes && !does) node.fail("needs \"fails\", \"takes\" or \"does\"");
    return [rule](SimulatedDesktop& desktop) { desktop.add(rule); };
}

}  // namespace quil::simulated
