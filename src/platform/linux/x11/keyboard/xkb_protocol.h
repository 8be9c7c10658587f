#pragma once

// The header is not C++: it has fields called "explicit".
#define explicit explicit_
#include <xcb/xkb.h>
#undef explicit

#include <cstdint>
#include <vector>

#include "platform/linux/x11/connection.h"

/// Requests of the X keyboard extension, about the keyboard that programs listen to and all the
/// devices behind it.
namespace quil::linux_platform {

inline constexpr std::uint16_t kCoreKeyboard = XCB_XKB_ID_USE_CORE_KBD;

/// Makes the extension usable on this connection; false when the server lacks it.
bool enableXkb(X11Connection& connection);

/// The modifiers of `affected` become locked or, where `locks` lacks them, unlocked.
void lockModifiers(X11Connection& connection, std::uint8_t affected, std::uint8_t locks);

/// The modifiers that the next key will have, and no other, become those of `latches`, and the
/// groups by which the layout that it is of differs from the active one become `groups`.
void latchForNextKey(X11Connection& connection, std::uint8_t latches, std::int16_t groups);

/// Turns these controls (XCB_XKB_BOOL_CTRL_…) of the device on or off.
void enableControls(X11Connection& connection, std::uint16_t device, std::uint32_t controls,
                    bool areOn);

/// Changes a keyboard's map; `values` are what follows the request. Whether the server took it.
bool setKeyboardMap(X11Connection& connection, xcb_xkb_set_map_request_t request,
                    const std::vector<std::uint8_t>& values);

}  // namespace quil::linux_platform
