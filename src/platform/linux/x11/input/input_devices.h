#pragma once

#include <xcb/xinput.h>

#include <bitset>
#include <cstdint>
#include <optional>
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

/// The keyboard that programs listen to and the devices behind it.
struct KeyboardsInUse {
    std::uint8_t master = 0;
    /// The device that synthetic events come from.
    std::uint8_t synthetic = 0;
    /// The others.
    std::vector<std::uint8_t> real;
};

/// Nothing when the server has no devices (X Input 2.0), or none for synthetic events.
std::optional<KeyboardsInUse> keyboardsInUse(X11Connection& connection);

/// What the user has made of the buttons of the device that synthetic events come from: for each
/// button, from 1 on, the one that it stands for, before the pointer's own order is applied. Empty
/// when the server does not say.
std::vector<std::uint8_t> syntheticButtons(X11Connection& connection);

/// The device becomes the one that was used last; programs hear nothing of it.
void releaseUnusedKey(X11Connection& connection, std::uint8_t device);

/// Programs see a key go down that is held on a real keyboard and that they take to be up.
void pressHeldKey(X11Connection& connection, std::uint8_t device, std::uint8_t keyCode);

}  // namespace quil::linux_platform
