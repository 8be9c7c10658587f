#pragma once

#include <xcb/xinput.h>

#include <bitset>
#include <vector>

#include "platform/linux/x11/connection.h"

namespace quil::linux_platform {

/// Keys that are down, by X key code.
using KeySet = std::bitset<256>;

/// The keys that are down on the keyboard that programs listen to.
KeySet keysDown(X11Connection& connection);

/// The keys that somebody holds on a real keyboard: those that are down on the devices behind the
/// keyboard, other than the device that synthetic events come from.
KeySet keysHeldByHand(X11Connection& connection);

}  // namespace quil::linux_platform
