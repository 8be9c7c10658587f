#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/simulated/scenario/document.h"

namespace quil {
class SimulatedDesktop;
}

namespace quil::simulated {

/// What a scenario says beyond the desktop.
struct Scenario {
    /// Where what is done to the desktop is to be written (log_file.h).
    std::optional<std::string> log;
};

/// Makes a new desktop what the scenario describes (docs/simulated-desktop.md). Throws a
/// `ScenarioError`, and leaves the desktop as it was, when the text is no scenario.
Scenario loadScenario(std::string_view text, SimulatedDesktop& desktop);

}  // namespace quil::simulated
