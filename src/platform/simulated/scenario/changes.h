#pragma once

#include "platform/simulated/element.h"
#include "platform/simulated/scenario/names.h"

namespace quil::simulated {

/// A change of the desktop as a scenario writes it: an object, or a list of objects, whose changes
/// are made in order. Each object has one member that says what changes (`{"frontmost": "notes"}`)
/// and, for some, further ones that say how.
Change readChange(const Node& node, Names& names);

}  // namespace quil::simulated
