#pragma once

#include <cstdint>
#include <optional>

#include "platform/linux/x11/input/focused_client.h"
#include "platform/linux/x11/input/keyboard_session.h"
#include "platform/linux/x11/input/spare_key_mapping.h"

namespace quil::linux_platform {

/// What a key of the typing block has on a US keyboard, by itself and with Shift.
struct LatinKeysyms {
    std::uint8_t plain = 0;
    std::uint8_t shifted = 0;
};

/// The Latin keysyms of a key of the typing block; nothing for another key.
std::optional<LatinKeysyms> latinKeysyms(std::uint8_t keyCode);
/// The same, for a key that has no Latin keysym in any of the user's layouts.
std::optional<LatinKeysyms> missingLatinKeysyms(const KeyboardMap& map, std::uint8_t keyCode);

/// The key to press for a command that is named by the letter of a US keyboard on this key: this
/// one, or the one that has the letter in the active layout (`group`), or else in another one of
/// the keyboard's; programs look there, too. Nothing when no key has it, or this one is no
/// letter's.
std::optional<std::uint8_t> keyOfShortcut(const KeyboardMap& map, std::uint8_t group,
                                          std::uint8_t keyCode);

/// A spare key that stands for a Latin one while it lives. Programs know commands by their Latin
/// letters: Control and the key that is V elsewhere pastes in a Cyrillic layout too, which without
/// a second, Latin layout needs a key with that letter.
class LatinShortcutKey {
  public:
    LatinShortcutKey(KeyboardSession& session, LatinKeysyms keysyms);
    /// Waits until the program that has the focus has processed it.
    ~LatinShortcutKey();

    /// Nothing when there is no spare key.
    std::optional<std::uint8_t> keyCode() const;

  private:
    FocusedClient client_;
    SpareKeyUse spare_;
};

}  // namespace quil::linux_platform
