#pragma once

#include "platform/linux/x11/connection.h"
#include "platform/linux/x11/input/text_plan.h"
#include "platform/linux/x11/keyboard/keyboard_map.h"

namespace quil::linux_platform {

/// Use of the keyboard's spare keys, by the runtime that holds the keyboard lock. Should this
/// process be ended meanwhile, the keys keep what they mean, which is harmless as no keyboard has
/// them, and the next one that uses them clears them away.
class SpareKeyUse {
  public:
    /// `map` is what the keyboard means without spare keys.
    SpareKeyUse(X11Connection& connection, KeyboardMap map);

    const SpareKeys& keys() const { return keys_; }
    /// Whether keys mean something now, from an earlier use perhaps.
    bool isMapped() const { return isMapped_; }
    /// Gives the keys these meanings, all in one request, so that programs read the keyboard again
    /// only once. Whether the server took it.
    bool map(const SpareKeysyms& keysyms);
    /// Takes all meanings from them.
    void unmap();

  private:
    bool send(const SpareKeysyms& keysyms);

    X11Connection& connection_;
    KeyboardMap map_;
    SpareKeys keys_;
    bool isMapped_ = false;
};

/// Takes from the map what an earlier use has left behind.
void forgetSpareKeys(X11Connection& connection, KeyboardMap& map);

/// Whether an earlier use has left something behind, or one goes on.
bool hasSpareKeys(X11Connection& connection);

/// Takes it from the keyboard.
void clearSpareKeys(X11Connection& connection);

}  // namespace quil::linux_platform
