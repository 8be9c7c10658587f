#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/atspi/facts.h"
#include "platform/value.h"

/// What facts about an element make its attributes and actions.
namespace quil::linux_platform {

/// Makes the handle of a child.
using ElementMaker = std::function<ElementRef(const Reference&)>;

/// One attribute: which facts have to be known, and what they make.
struct Attribute {
    std::string_view name;
    /// What has to be asked for next, given what is known; empty when `read` can tell.
    FactSet (*needs)(const Facts& facts);
    /// 0 with or without a value, or an error code.
    std::int32_t (*read)(const Facts& facts, const ElementMaker& maker,
                         std::optional<Value>& value);
};

/// The attribute of that name; null when there is no such attribute.
const Attribute* findAttribute(std::string_view name);

/// What has to be asked for next to know the element's actions; the scroll bar is looked for apart.
FactSet needsForActions(const Facts& facts);
/// The names of an element's actions for hosts, in order.
std::vector<std::string> actionNames(const Facts& facts);
/// Whether it is a page that is scrolled by asking for its content to be elsewhere: one that offers
/// no actions for that.
bool isScrolledPage(const Facts& facts);
/// 0, or why the actions are not known.
std::int32_t actionsCode(const Facts& facts);

/// The code of an element about which nothing can be known: it or its program has gone, or its
/// program hangs. 0 otherwise.
std::int32_t elementCode(const Facts& facts);

}  // namespace quil::linux_platform
