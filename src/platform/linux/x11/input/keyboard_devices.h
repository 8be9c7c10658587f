#pragma once

#include <xcb/xinput.h>

#include <bitset>
#include <cstdint>
#include <vector>

#include "platform/linux/x11/connection.h"

namespace quil::linux_platform {

/// Keys that are down, by X key code.
using KeySet = std::bitset<256>;

/// The keys that are down on the keyboard that programs listen to.
KeySet keysDown(X11Connection& connection);

/// A real keyboard and the keys that are held on it.
struct HeldKeys {
    std::uint8_t device = 0;
    KeySet keys;
};

/// The keys that are down on the keyboards behind the one that programs listen to, without the
/// device that synthetic events come from.
std::vector<HeldKeys> keysHeldByUser(X11Connection& connection);

/// Programs see a key go down that is held on a real keyboard and that they take to be up.
void pressHeldKey(X11Connection& connection, std::uint8_t device, std::uint8_t keyCode);

}  // namespace quil::linux_platform
