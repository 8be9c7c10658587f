#include "platform/linux/accessibility/attributes.h"

#include <algorithm>
#include <iterator>

#include "platform/accessibility.h"
#include "platform/linux/accessibility/action_names.h"
#include "platform/linux/accessibility/element_value.h"

namespace quil::linux_platform {
namespace {

/// Those of the facts that have not been asked for.
FactSet unasked(const Facts& facts, FactSet wanted) {
    return wanted.without(facts.asked);
}

// AXRole, AXSubrole

FactSet needsForRole(const Facts& facts) {
    if (!facts.asked.has(Fact::role)) return {Fact::role};
    switch (facts.role) {
        case AtspiRole::alert:
        case AtspiRole::filler:
        case AtspiRole::menu:
            if (facts.asked.has(Fact::parentRole)) return {};
            return facts.asked.has(Fact::parent) ? FactSet{Fact::parentRole}
                                                 : FactSet{Fact::parent};
        case AtspiRole::comboBox:
            if (!facts.asked.has(Fact::childCount)) return {Fact::childCount};
            if (!facts.asked.has(Fact::children)) return {Fact::children};
            return unasked(facts, {Fact::editableChild});
        case AtspiRole::entry:
        case AtspiRole::text:
            return unasked(facts, {Fact::states});
        default:
            return {};
    }
}

ProtocolRole roleOf(const Facts& facts) {
    return protocolRole(facts.role,
                        {.isChildOfApplication = facts.parentRole == AtspiRole::application,
                         .isChildOfMenuBar = facts.parentRole == AtspiRole::menuBar,
                         .hasEditableText = !facts.editableChild.path.empty(),
                         .isMultiLine = facts.states.has(AtspiState::multiLine)});
}

std::int32_t readRole(const Facts& facts, const ElementMaker&, std::optional<Value>& value) {
    value = Value(std::string(roleOf(facts).role));
    return 0;
}

std::int32_t readSubrole(const Facts& facts, const ElementMaker&, std::optional<Value>& value) {
    const std::string_view subrole = roleOf(facts).subrole;
    if (subrole.empty()) return kAxNoValue;
    value = Value(std::string(subrole));
    return 0;
}

// AXTitle, AXDescription, AXIdentifier

template <Fact kFact>
FactSet needsFact(const Facts& facts) {
    return unasked(facts, {kFact});
}

template <Fact kFact, std::string Facts::*kField>
std::int32_t readText(const Facts& facts, const ElementMaker&, std::optional<Value>& value) {
    if (facts.code(kFact) != 0) return facts.code(kFact);
    value = Value(facts.*kField);
    return 0;
}

// AXValue

std::int32_t readElementValue(const Facts& facts, const ElementMaker&,
                              std::optional<Value>& value) {
    return readValue(facts, value);
}

// AXEnabled

std::int32_t readEnabled(const Facts& facts, const ElementMaker&, std::optional<Value>& value) {
    if (facts.code(Fact::states) != 0) return facts.code(Fact::states);
    // Toolkits mean the same by both; some say one of them only.
    value = Value(facts.states.has(AtspiState::sensitive) || facts.states.has(AtspiState::enabled));
    return 0;
}

// AXPosition, AXSize

bool isSomewhere(const Facts& facts) {
    return facts.states.has(AtspiState::showing) && facts.interfaces.has(AtspiInterface::component);
}

FactSet needsForExtents(const Facts& facts) {
    const FactSet first = unasked(facts, {Fact::states, Fact::interfaces});
    if (!first.isEmpty()) return first;
    return isSomewhere(facts) ? unasked(facts, {Fact::extents}) : FactSet();
}

std::int32_t extentsCode(const Facts& facts) {
    if (!isSomewhere(facts)) return kAxNoValue;
    if (facts.code(Fact::extents) != 0) return facts.code(Fact::extents);
    return facts.extents.hasArea() ? 0 : kAxNoValue;
}

std::int32_t readPosition(const Facts& facts, const ElementMaker&, std::optional<Value>& value) {
    const std::int32_t code = extentsCode(facts);
    if (code == 0) value = Value(Point{facts.extents.x, facts.extents.y});
    return code;
}

std::int32_t readSize(const Facts& facts, const ElementMaker&, std::optional<Value>& value) {
    const std::int32_t code = extentsCode(facts);
    if (code == 0) value = Value(Size{facts.extents.width, facts.extents.height});
    return code;
}

// AXChildren

FactSet needsForChildren(const Facts& facts) {
    const FactSet first = unasked(facts, {Fact::states, Fact::interfaces, Fact::childCount});
    if (!first.isEmpty()) return first;
    return unasked(facts, {Fact::children});
}

std::int32_t readChildren(const Facts& facts, const ElementMaker& maker,
                          std::optional<Value>& value) {
    if (facts.code(Fact::children) != 0) return facts.code(Fact::children);
    Value::List children;
    children.reserve(facts.children.size());
    for (const Reference& child : facts.children) children.emplace_back(maker(child));
    value = Value(std::move(children));
    return 0;
}

constexpr Attribute kAttributes[] = {
    {"AXRole", needsForRole, readRole},
    {"AXSubrole", needsForRole, readSubrole},
    {"AXTitle", needsFact<Fact::name>, readText<Fact::name, &Facts::name>},
    {"AXDescription", needsFact<Fact::description>,
     readText<Fact::description, &Facts::description>},
    {"AXIdentifier", needsFact<Fact::identifier>, readText<Fact::identifier, &Facts::identifier>},
    {"AXValue", needsForValue, readElementValue},
    {"AXEnabled", needsFact<Fact::states>, readEnabled},
    {"AXPosition", needsForExtents, readPosition},
    {"AXSize", needsForExtents, readSize},
    {"AXChildren", needsForChildren, readChildren},
};

}  // namespace

const Attribute* findAttribute(std::string_view name) {
    const auto* found =
        std::find_if(std::begin(kAttributes), std::end(kAttributes),
                     [&](const Attribute& attribute) { return attribute.name == name; });
    return found == std::end(kAttributes) ? nullptr : found;
}

FactSet needsForActions(const Facts& facts) {
    const FactSet first = unasked(facts, {Fact::role, Fact::states, Fact::interfaces});
    if (!first.isEmpty()) return first;
    FactSet next;
    if (facts.interfaces.has(AtspiInterface::action)) next.add(Fact::actions);
    if (facts.role == AtspiRole::documentWeb) next.add(Fact::childCount);
    return unasked(facts, next);
}

bool isScrolledPage(const Facts& facts) {
    return facts.role == AtspiRole::documentWeb && facts.actions.empty() && facts.childCount > 0 &&
           isSomewhere(facts);
}

std::vector<std::string> actionNames(const Facts& facts) {
    std::vector<std::string> names = protocolNames(facts.actions, facts.role);
    std::erase(names, "");
    const bool scrollsItself =
        std::find(names.begin(), names.end(), kScrollDownByPage) != names.end();
    if (!scrollsItself && (!facts.scrollBar.path.empty() || isScrolledPage(facts))) {
        names.emplace_back(kScrollUpByPage);
        names.emplace_back(kScrollDownByPage);
    }
    return names;
}

std::int32_t actionsCode(const Facts& facts) {
    return facts.interfaces.has(AtspiInterface::action) ? facts.code(Fact::actions) : 0;
}

std::int32_t elementCode(const Facts& facts) {
    if (facts.knows(Fact::states) && facts.states.has(AtspiState::defunct)) {
        return kAxInvalidUIElement;
    }
    for (const Fact fact : {Fact::role, Fact::states}) {
        const std::int32_t code = facts.asked.has(fact) ? facts.code(fact) : 0;
        // Every element has these: one without them is not there.
        if (code == kAxAttributeUnsupported) return kAxInvalidUIElement;
        if (code == kAxInvalidUIElement || code == kAxCannotComplete) return code;
    }
    return 0;
}

}  // namespace quil::linux_platform
