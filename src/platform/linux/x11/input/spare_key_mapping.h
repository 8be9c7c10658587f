#pragma once

#include "platform/linux/x11/connection.h"
#include "platform/linux/x11/input/synthetic_keyboard.h"
#include "platform/linux/x11/input/text_plan.h"
#include "platform/linux/x11/keyboard/keyboard_map.h"

namespace quil::linux_platform {

/// Use of the keyboard's spare keys, by the runtime that holds the keyboard lock. Should this
/// process be ended meanwhile, the keys keep what they mean, which is harmless as no keyboard has
/// them, and the next one that uses them clears them away.
class SpareKeyUse {
  public:
    /// `shownMap` is the keyboard's map, with what an earlier use has left behind.
    SpareKeyUse(SyntheticKeyboard& keyboard, KeyboardMap shownMap);

    const SpareKeys& keys() const { return keys_; }
    /// The keyboard's map, as this use has left it.
    const KeyboardMap& shownMap() const { return shownMap_; }
    /// Whether keys mean something now, from an earlier use perhaps.
    bool isMapped() const { return isMapped_; }
    /// Gives the keys these meanings, all in one request, so that programs read the keyboard again
    /// only once. Whether the server took it; not when the user has chosen another layout. One that
    /// refuses has no spare keys then (Xwayland 22.1 does).
    bool map(const SpareKeysyms& keysyms);
    /// Takes all meanings from them.
    void unmap();

  private:
    bool send(const SpareKeysyms& keysyms);
    void readShownMap();

    SyntheticKeyboard& keyboard_;
    X11Connection& connection_;
    KeyboardMap shownMap_;
    /// Without spare keys.
    KeyboardMap map_;
    SpareKeys keys_;
    bool isMapped_ = false;
};

/// Takes from the map what an earlier use has left behind. Whether one has left something.
bool forgetSpareKeys(X11Connection& connection, KeyboardMap& map);

/// Whether an earlier use has left something behind, or one goes on.
bool hasSpareKeys(X11Connection& connection);

/// Takes it from the keyboard.
void clearSpareKeys(X11Connection& connection);

}  // namespace quil::linux_platform
