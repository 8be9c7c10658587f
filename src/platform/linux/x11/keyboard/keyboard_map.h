#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "platform/linux/x11/connection.h"

namespace quil::linux_platform {

/// What the keys of the keyboard mean, as the X keyboard extension describes them: a key has up to
/// four groups (layouts) of keysyms, a group has a type, and the type says which modifiers lead to
/// which of the group's keysyms (its levels).
struct KeyboardMap {
    struct LevelEntry {
        /// Exactly these modifiers, of the type's mask, lead to the level.
        std::uint8_t modifiers = 0;
        std::uint8_t level = 0;
        bool operator==(const LevelEntry&) const = default;
    };
    struct KeyType {
        /// The modifiers that count.
        std::uint8_t mask = 0;
        std::uint8_t levels = 1;
        /// What is not among them leads to level 0.
        std::vector<LevelEntry> entries;
        bool operator==(const KeyType&) const = default;
    };
    struct Key {
        std::array<std::uint8_t, 4> types{};
        /// The number of groups, and what happens to a group beyond them.
        std::uint8_t groupInfo = 0;
        /// Keysyms in a row of `keysyms`, which has a row for each group.
        std::uint8_t width = 0;
        std::vector<std::uint32_t> keysyms;
        /// The modifiers that the key is.
        std::uint8_t modifiers = 0;

        std::uint8_t groups() const { return groupInfo & 0x0F; }
        bool hasKeysyms() const;
        /// The key's group when the keyboard is in that one; nothing for a key without groups.
        std::optional<std::uint8_t> group(std::uint8_t keyboardGroup) const;
        std::uint32_t keysym(std::uint8_t group, std::uint8_t level) const;
        bool operator==(const Key&) const = default;
    };

    std::uint8_t minKeyCode = 8;
    std::uint8_t maxKeyCode = 255;
    std::vector<KeyType> types;
    std::array<Key, 256> keys;

    /// A key with that keysym at level 0 of its first group; one that is a modifier when there is.
    std::optional<std::uint8_t> keyWithKeysym(std::uint32_t keysym) const;
    /// The modifiers that a key with that keysym is.
    std::uint8_t modifiersOf(std::uint32_t keysym) const;
    bool operator==(const KeyboardMap&) const = default;
};

/// The map of a keyboard; null when the server does not give it. The extension must be enabled.
std::optional<KeyboardMap> readKeyboardMap(X11Connection& connection, std::uint16_t device);

}  // namespace quil::linux_platform
