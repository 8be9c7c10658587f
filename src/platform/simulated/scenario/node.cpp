#include "platform/simulated/scenario/node.h"

#include <algorithm>
#include <limits>

namespace quil::simulated {
namespace {

std::string joined(const std::vector<std::string_view>& names) {
    std::string text;
    for (const std::string_view name : names) {
        if (!text.empty()) text += ", ";
        text += name;
    }
    return text;
}

}  // namespace

void Node::fail(const std::string& what) const {
    throw ScenarioError((path_.empty() ? "the scenario" : path_) + ": " + what);
}

bool Node::boolean() const {
    if (!json_->is_boolean()) fail("must be true or false");
    return json_->get<bool>();
}

std::string Node::string() const {
    if (!json_->is_string()) fail("must be a string");
    return json_->get<std::string>();
}

double Node::number() const {
    if (!json_->is_number()) fail("must be a number");
    return json_->get<double>();
}

double Node::seconds() const {
    // A century; beyond it the clock's nanoseconds would overflow.
    constexpr double kLimit = 3e9;
    const double value = number();
    if (!(value >= 0 && value <= kLimit)) fail("must be a number of seconds from 0 to 3e9");
    return value;
}

std::optional<std::int64_t> Node::asInteger() const {
    constexpr auto kLimit = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
    const bool fits = json_->is_number_unsigned() ? json_->get<std::uint64_t>() <= kLimit
                                                  : json_->is_number_integer();
    return fits ? std::optional(json_->get<std::int64_t>()) : std::nullopt;
}

std::int64_t Node::integer(std::int64_t minimum, std::int64_t maximum) const {
    const auto value = asInteger();
    if (!value || *value < minimum || *value > maximum) {
        fail("must be an integer from " + std::to_string(minimum) + " to " +
             std::to_string(maximum));
    }
    return *value;
}

std::int32_t Node::integer32() const {
    using Limits = std::numeric_limits<std::int32_t>;
    return static_cast<std::int32_t>(integer(Limits::min(), Limits::max()));
}

std::uint32_t Node::unsigned32() const {
    return static_cast<std::uint32_t>(integer(0, std::numeric_limits<std::uint32_t>::max()));
}

Point Node::point() const {
    const auto values = numbers(2, "[x, y]");
    return {values[0], values[1]};
}

Size Node::size() const {
    const auto values = numbers(2, "[width, height]");
    return {values[0], values[1]};
}

Rect Node::rect() const {
    const auto values = numbers(4, "[x, y, width, height]");
    return {values[0], values[1], values[2], values[3]};
}

std::vector<double> Node::numbers(std::size_t count, const char* shape) const {
    if (!isList() || json_->size() != count) fail(std::string("must be ") + shape);
    std::vector<double> values;
    for (const Node& entry : list()) values.push_back(entry.number());
    return values;
}

std::vector<Node> Node::list() const {
    if (!isList()) fail("must be a list");
    return oneOrMore();
}

std::vector<Node> Node::oneOrMore() const {
    if (!isList()) return {*this};
    std::vector<Node> entries;
    for (std::size_t i = 0; i < json_->size(); ++i) {
        entries.push_back(Node((*json_)[i], path_ + '[' + std::to_string(i) + ']'));
    }
    return entries;
}

std::vector<std::string> Node::strings() const {
    std::vector<std::string> result;
    for (const Node& entry : list()) result.push_back(entry.string());
    return result;
}

std::vector<std::pair<std::string, Node>> Node::members() const {
    if (!isObject()) fail("must be an object");
    std::vector<std::pair<std::string, Node>> result;
    for (const auto& [name, value] : json_->items()) result.emplace_back(name, child(name, value));
    return result;
}

std::optional<Node> Node::find(std::string_view name) const {
    if (!isObject()) fail("must be an object");
    const auto entry = json_->find(name);
    if (entry == json_->end()) return {};
    return child(std::string(name), *entry);
}

Node Node::require(std::string_view name) const {
    auto found = find(name);
    if (!found) fail("\"" + std::string(name) + "\" is missing");
    return *found;
}

void Node::allowOnly(const std::vector<std::string_view>& names) const {
    if (!isObject()) fail("must be an object");
    for (const auto& [name, value] : json_->items()) {
        if (std::ranges::find(names, name) == names.end()) {
            child(name, value).fail("no such member here; there are: " + joined(names));
        }
    }
}

Node Node::child(const std::string& name, const Json& json) const {
    return {json, path_.empty() ? name : path_ + '.' + name};
}

}  // namespace quil::simulated
