#pragma once

#include <string>

namespace quil {
class SimulatedDesktop;
}

namespace quil::simulated {

/// Writes everything that is done to a desktop to a file, one JSON object on each line
/// (docs/simulated-desktop.md), from now on and as it happens: what a request did is in the file
/// before its response is written. The file begins empty. Throws std::runtime_error when it cannot
/// be written.
void writeLogTo(const std::string& path, SimulatedDesktop& desktop);

}  // namespace quil::simulated
