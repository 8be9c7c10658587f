#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/linux/atspi/accessibility_bus.h"
#include "platform/linux/atspi/facts.h"

namespace quil::linux_platform {

/// Looks for those children that are showing in a container that has more than can be listed, such
/// as a spreadsheet with 2^31 cells: at points of its area, and around what is there. `found` gets
/// the headers of a table first, then its cells in their order; it is called once, from within a
/// wait for replies. Nothing is found where a program does not say what is at a point. At most so
/// many children are looked at.
void findShowingChildren(AtspiProgram& program, const std::string& path, bool isTable,
                         std::int64_t maximumChildren,
                         std::function<void(std::vector<Reference>)> found);

}  // namespace quil::linux_platform
