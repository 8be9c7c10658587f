#pragma once

#include <memory>

#include "platform/platform.h"

namespace quil {

/// The platform of the machine: the desktop that this process belongs to. Defined by the backend
/// that the executable is linked with.
std::unique_ptr<Platform> machinePlatform();

}  // namespace quil
