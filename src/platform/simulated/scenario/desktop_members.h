#pragma once

#include <functional>
#include <vector>

#include "platform/simulated/scenario/elements.h"

namespace quil::simulated {

/// What one member of a scenario, or of a change, does to the desktop.
using Step = std::function<void(Building&)>;

/// A member of scenarios and of changes.
struct DesktopMember {
    std::string_view name;
    Step (*read)(const Node& node, Names& names);
};

/// The members, in the order in which they take effect.
const std::vector<DesktopMember>& desktopMembers();

/// What the user does: one object, or a list of objects.
Step readUser(const Node& node, Names& names);

/// Applications on disk.
Step readBundles(const Node& node, Names& names);

/// Rules about the runtime's calls.
Step readRules(const Node& node, Names& names);

}  // namespace quil::simulated
