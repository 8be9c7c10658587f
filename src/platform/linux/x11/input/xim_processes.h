#pragma once

#include <cstdint>
#include <vector>

#include "platform/linux/x11/connection.h"

namespace quil::linux_platform {

/// The processes that keys go through on the way to this program, when it gets them by way of an X
/// input method (XIM): it was started with one (`XMODIFIERS`) that runs. They send each key back,
/// and only then the program looks up what it means.
std::vector<std::int32_t> ximProcesses(X11Connection& connection, std::int32_t pid);

}  // namespace quil::linux_platform
