#include "platform/simulated/scenario/values.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "platform/accessibility.h"
#include "platform/simulated/desktop.h"

namespace quil::simulated {
namespace {

class MissingElement : public AccessibilityElement {};

struct NamedCode {
    std::string_view name;
    std::int32_t code;
};

constexpr NamedCode kResultCodes[] = {
    {"success", kAxSuccess},
    {"failure", kAxFailure},
    {"illegalArgument", kAxIllegalArgument},
    {"invalidElement", kAxInvalidUIElement},
    {"cannotComplete", kAxCannotComplete},
    {"attributeUnsupported", kAxAttributeUnsupported},
    {"actionUnsupported", kAxActionUnsupported},
    {"notImplemented", kAxNotImplemented},
    {"apiDisabled", kAxApiDisabled},
    {"noValue", kAxNoValue},
};

ValueSource constant(Value value) {
    return {[value = std::move(value)](SimulatedDesktop&) { return value; }, false};
}

ValueSource readNumber(const Node& node) {
    if (const auto integer = node.asInteger()) return constant(*integer);
    return constant(node.number());
}

ValueSource readList(const Node& node, Names& names) {
    std::vector<ValueSource> entries;
    for (const Node& entry : node.list()) entries.push_back(readValue(entry, names));
    const bool mentions = std::ranges::any_of(entries, &ValueSource::mentionsElements);
    return {[entries](SimulatedDesktop& desktop) {
                Value::List list;
                for (const ValueSource& entry : entries) list.push_back(entry.get(desktop));
                return Value(std::move(list));
            },
            mentions};
}

ValueSource readDictionary(const Node& node, Names& names) {
    std::vector<std::pair<std::string, ValueSource>> members;
    bool mentions = false;
    for (const auto& [name, member] : node.members()) {
        members.emplace_back(name, readValue(member, names));
        mentions = mentions || members.back().second.mentionsElements;
    }
    return {[members](SimulatedDesktop& desktop) {
                Value::Dictionary dictionary;
                for (const auto& [name, member] : members) {
                    dictionary.emplace(name, member.get(desktop));
                }
                return Value(std::move(dictionary));
            },
            mentions};
}

ValueSource readReference(const Node& node, Names& names) {
    return {
        [id = names.refer(node, Kind::element)](SimulatedDesktop& desktop) {
            const Element* element = desktop.find(id);
            return Value(element ? element->ref() : ElementRef(std::make_shared<MissingElement>()));
        },
        true};
}

}  // namespace

ValueSource readValue(const Node& node, Names& names) {
    if (node.json().is_boolean()) return constant(node.boolean());
    if (node.isString()) return constant(node.string());
    if (node.json().is_number()) return readNumber(node);
    if (node.isList()) return readList(node, names);
    if (node.isObject() && node.json().size() == 1) {
        if (const auto point = node.find("point")) return constant(point->point());
        if (const auto size = node.find("size")) return constant(size->size());
        if (const auto element = node.find("element")) return readReference(*element, names);
        if (const auto type = node.find("opaque")) return constant(OpaqueValue{type->string()});
        if (const auto entries = node.find("dictionary")) return readDictionary(*entries, names);
    }
    node.fail(
        "must be a string, a boolean, a number, a list, or an object with one of the members "
        "point, size, element, dictionary, opaque");
}

std::int32_t readResultCode(const Node& node) {
    if (!node.isString()) return node.integer32();
    const auto found = std::ranges::find(kResultCodes, node.string(), &NamedCode::name);
    if (found != std::end(kResultCodes)) return found->code;
    std::string known;
    for (const NamedCode& entry : kResultCodes) known += ' ' + std::string(entry.name);
    node.fail("no result code has this name; there are:" + known);
}

}  // namespace quil::simulated
