#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "platform/linux/x11/keyboard/keyboard_map.h"

/// How a text is typed: which keys, with which modifiers, and what keys that the layout has no use
/// for have to mean meanwhile.
namespace quil::linux_platform {

/// A key that is pressed and released while exactly these modifiers are active.
struct Stroke {
    /// 0 for a keysym that no key can have.
    std::uint8_t keyCode = 0;
    std::uint8_t modifiers = 0;
    /// Whether programs get a string of several UTF-16 units for it. Some take strings by another
    /// way than single units, and one may overtake the other there.
    bool isString = false;
    bool operator==(const Stroke&) const = default;
};

/// Keys without a meaning of their own, and the ways to press one of them: each combination of
/// modifiers can stand for another keysym.
struct SpareKeys {
    std::vector<std::uint8_t> keyCodes;
    /// By level: the modifiers that lead to it.
    std::vector<std::uint8_t> combinations;
    /// The levels in the order in which they are used: those without Shift, which is a key that has
    /// to be pressed, come first.
    std::vector<std::uint8_t> levels;
    /// The key type with these combinations.
    std::size_t type = 0;

    std::size_t capacity() const { return keyCodes.size() * levels.size(); }
};

/// What the spare keys mean: the keysyms of each level, for the keys in their order; missing where
/// a key means nothing.
using SpareKeysyms = std::vector<std::vector<std::uint32_t>>;

/// Strokes that can be sent one after the other once the spare keys mean this.
struct TextBatch {
    SpareKeysyms keysyms;
    std::vector<Stroke> strokes;
};

/// The spare keys of a keyboard. Only keys beyond the typing block count, whose meaning does not
/// depend on the layout; only modifiers that no program takes for a command do.
SpareKeys findSpareKeys(const KeyboardMap& map);

/// The keysyms to be typed for a text: those of its characters; Return for every kind of line
/// break, Tab, Backspace, Escape and Delete for their control characters. Other control characters
/// cannot be typed and are left out; a broken surrogate becomes U+FFFD.
/// With `asUnits`, each half of a surrogate pair has a keysym of its own.
std::vector<std::uint32_t> keysymsToType(std::u16string_view text, bool asUnits);

/// Types the keysyms by the keys that have them in this layout (`group`) and by spare keys, a
/// stroke for each. A new batch begins when the spare keys are used up. `locked` are modifiers that
/// stay active.
std::vector<TextBatch> planText(const std::vector<std::uint32_t>& keysyms, const KeyboardMap& map,
                                std::uint8_t group, std::uint8_t locked, const SpareKeys& spare);

}  // namespace quil::linux_platform
