#pragma once

#include <cstdint>

#include "platform/linux/x11/connection.h"

/// What a runtime leaves on the server when it ends in the middle of a request: a button or keys
/// that are down, modifiers that are locked, spare keys that mean something. Properties of the root
/// window say which.
namespace quil::linux_platform {

/// Says that this button of the synthetic pointer is being pressed, by the runtime that the window
/// belongs to; to be said before.
void notePressedButton(X11Connection& connection, xcb_window_t runtime, std::uint8_t button);
/// Says that it has been released.
void noteReleasedButton(X11Connection& connection);
/// Says that a modifier key is being pressed, or has been released, that is held around pointer
/// events, by the runtime that the window belongs to.
void noteHeldModifier(X11Connection& connection, xcb_window_t runtime, std::uint8_t keyCode,
                      bool isDown);
/// Releases the button and the modifier keys of a runtime that is there no more.
void releasePointerOfCrashedRuntime(X11Connection& connection);

/// Says which modifiers the user has locked, before keys are posted.
void noteLocks(X11Connection& connection, std::uint8_t locks);
/// Says that the keyboard is as the user had it.
void noteKeyboardRestored(X11Connection& connection);
/// Releases keys and restores the locks, for the runtime that holds the keyboard lock.
void releaseKeysOfCrashedRuntime(X11Connection& connection);

/// Undoes all of it, unless another runtime has the keyboard: whether it was posting keys.
bool recoverFromCrashedRuntime(X11Connection& connection);

}  // namespace quil::linux_platform
