#include "platform/simulated/scenario/elements.h"

#include "platform/simulated/scenario/changes.h"
#include "platform/simulated/scenario/values.h"

namespace quil::simulated {
namespace {

/// Sets an attribute, once the elements that its value mentions exist.
Setting attributeSetting(std::string name, ValueSource value) {
    return
        [name = std::move(name), value = std::move(value)](Building& building, Element& element) {
            const auto set = [&element, name, value, &desktop = building.desktop] {
                element.attribute(name, value.get(desktop));
            };
            if (value.mentionsElements) {
                building.later(set);
            } else {
                set();
            }
        };
}

template <const auto& attribute>
Setting readText(const Node& node, Names&) {
    return
        [text = node.string()](Building&, Element& element) { element.attribute(attribute, text); };
}

constexpr std::string_view kRole = "AXRole";
constexpr std::string_view kSubrole = "AXSubrole";
constexpr std::string_view kTitle = "AXTitle";
constexpr std::string_view kDescription = "AXDescription";
constexpr std::string_view kIdentifier = "AXIdentifier";

Setting readValueMember(const Node& node, Names& names) {
    return attributeSetting("AXValue", readValue(node, names));
}

Setting readEnabled(const Node& node, Names&) {
    return [enabled = node.boolean()](Building&, Element& element) { element.enabled(enabled); };
}

Setting readBounds(const Node& node, Names&) {
    return [bounds = node.rect()](Building&, Element& element) { element.bounds(bounds); };
}

Setting readFocusable(const Node& node, Names&) {
    return [focusable = node.boolean()](Building&, Element& element) {
        if (!focusable) {
            element.withoutAttribute("AXFocused");
        } else if (!element.find("AXFocused")) {
            element.focusable();
        }
    };
}

void setFocused(Element& element, bool focused) {
    Application* application = element.application();
    if (!application) return;
    if (auto* window = dynamic_cast<Window*>(&element)) {
        if (focused) application->focusWindow(window);
        if (!focused && application->focusedWindow() == window) application->focusWindow(nullptr);
    } else {
        if (focused) application->focusElement(&element);
        if (!focused && application->focusedElement() == &element)
            application->focusElement(nullptr);
    }
}

Setting readFocused(const Node& node, Names&) {
    return [focused = node.boolean()](Building& building, Element& element) {
        building.later([&element, focused] { setFocused(element, focused); });
    };
}

Setting readAttributes(const Node& node, Names& names) {
    std::vector<Setting> settings;
    for (const auto& [name, value] : node.members()) {
        settings.push_back(attributeSetting(name, readValue(value, names)));
    }
    return [settings](Building& building, Element& element) { apply(settings, building, element); };
}

/// A member that lists names of attributes.
template <Element& (Element::*change)(std::string_view)>
Setting readNames(const Node& node, Names&) {
    return [names = node.strings()](Building&, Element& element) {
        for (const std::string& name : names) (element.*change)(name);
    };
}

/// A member that gives result codes to names of attributes.
template <Element& (Element::*change)(std::string_view, std::int32_t)>
Setting readCodes(const Node& node, Names&) {
    std::vector<std::pair<std::string, std::int32_t>> codes;
    for (const auto& [name, code] : node.members()) codes.emplace_back(name, readResultCode(code));
    return [codes](Building&, Element& element) {
        for (const auto& [name, code] : codes) (element.*change)(name, code);
    };
}

Setting readActionNames(const Node& node, Names& names) {
    return [value = readValue(node, names)](Building& building, Element& element) {
        building.later([&element, value, &desktop = building.desktop] {
            element.actionNames(value.get(desktop));
        });
    };
}

Setting readActionNamesResult(const Node& node, Names&) {
    return [code = readResultCode(node)](Building&, Element& element) {
        element.actionNamesResult(code);
    };
}

Setting readAction(const Node& node, Names& names) {
    if (node.isString()) {
        return [name = node.string()](Building&, Element& element) { element.action(name); };
    }
    node.allowOnly({"name", "does", "result", "afterTimes"});
    const auto does = node.find("does");
    const auto result = node.find("result");
    const auto afterTimes = node.find("afterTimes");
    if (afterTimes && !result) afterTimes->fail("says when there is a \"result\"");
    return
        [name = node.require("name").string(), effect = does ? readChange(*does, names) : Change(),
         code = result ? std::optional(readResultCode(*result)) : std::nullopt,
         times = afterTimes ? static_cast<int>(afterTimes->integer(0, 1'000'000)) : 0](
            Building&, Element& element) {
            element.action(name, effect);
            if (code) element.actionResult(name, *code, times);
        };
}

Setting readActions(const Node& node, Names& names) {
    std::vector<Setting> actions;
    for (const Node& entry : node.list()) actions.push_back(readAction(entry, names));
    return [actions](Building& building, Element& element) { apply(actions, building, element); };
}

Setting readWhenSet(const Node& node, Names& names) {
    std::vector<std::pair<std::string, Change>> effects;
    for (const auto& [name, change] : node.members()) {
        effects.emplace_back(name, readChange(change, names));
    }
    return [effects](Building&, Element& element) {
        for (const auto& [name, change] : effects) element.whenSet(name, change);
    };
}

Setting readChildren(const Node& node, Names& names) {
    std::vector<std::function<void(Building&, Element&)>> children;
    for (const Node& entry : node.list()) children.push_back(readElement(entry, names));
    return [children](Building& building, Element& element) {
        for (const auto& build : children) build(building, element);
    };
}

}  // namespace

const std::vector<Member>& elementMembers() {
    static const std::vector<Member> members = {
        {"role", Kind::element, readText<kRole>},
        {"subrole", Kind::element, readText<kSubrole>},
        {"title", Kind::element, readText<kTitle>},
        {"description", Kind::element, readText<kDescription>},
        {"identifier", Kind::element, readText<kIdentifier>},
        {"value", Kind::element, readValueMember},
        {"enabled", Kind::element, readEnabled},
        {"bounds", Kind::element, readBounds},
        {"focusable", Kind::element, readFocusable},
        {"attributes", Kind::element, readAttributes},
        {"without", Kind::element, readNames<&Element::withoutAttribute>},
        {"empty", Kind::element, readNames<&Element::emptyAttribute>},
        {"readResults", Kind::element, readCodes<&Element::attributeResult>},
        {"setResults", Kind::element, readCodes<&Element::setResult>},
        {"whenSet", Kind::element, readWhenSet},
        {"actions", Kind::element, readActions},
        {"actionNames", Kind::element, readActionNames},
        {"actionNamesResult", Kind::element, readActionNamesResult},
        {"children", Kind::element, readChildren},
        {"focused", Kind::element, readFocused},
    };
    return members;
}

void Building::finish() {
    for (std::size_t i = 0; i < steps_.size(); ++i) steps_[i]();
    steps_.clear();
}

void apply(const std::vector<Setting>& settings, Building& building, Element& element) {
    for (const Setting& setting : settings) setting(building, element);
}

std::function<void(Building&, Element&)> readElement(const Node& node, Names& names) {
    const auto id = node.find("id");
    if (id) names.declare(*id, Kind::element);
    return [id = id ? id->string() : "", role = node.require("role").string(),
            settings = readMembers(node, Kind::element, names, {"id"})](Building& building,
                                                                        Element& parent) {
        apply(settings, building, parent.element(role).id(id));
    };
}

}  // namespace quil::simulated
