// Rules about the runtime's calls, as a scenario writes them.
#include <algorithm>

#include "platform/simulated/desktop.h"
#include "platform/simulated/scenario/changes.h"
#include "platform/simulated/scenario/desktop_members.h"
#include "platform/simulated/scenario/values.h"

namespace quil::simulated {
namespace {

constexpr int kMaximumCount = 1'000'000'000;

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

Rule readRule(const Node& node, Names& names) {
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
    return rule;
}

}  // namespace

Step readRules(const Node& node, Names& names) {
    std::vector<Rule> rules;
    for (const Node& entry : node.list()) rules.push_back(readRule(entry, names));
    return [rules](Building& building) {
        for (const Rule& rule : rules) building.desktop.add(rule);
    };
}

}  // namespace quil::simulated
