#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace quil {

/// One key with the modifiers held around it.
struct KeyCombination {
    /// A virtual key code.
    std::uint16_t keyCode = 0;
    /// `kEventFlagMask…` of shift, control, option and command.
    std::uint64_t flags = 0;

    bool operator==(const KeyCombination&) const = default;
};

/// Reads names joined by "+", in any case: the modifiers cmd, command, meta, ctrl, control, alt,
/// option and shift, and a key (the last one counts). Nothing when no key is named or the key is
/// unknown.
std::optional<KeyCombination> parseKeyCombination(std::string_view combo);

/// The flags of modifiers joined by "+", in the words of `parseKeyCombination`; none for an empty
/// text. Nothing when a word is no modifier.
std::optional<std::uint64_t> parseModifiers(std::string_view modifiers);

/// The virtual key code of a key's name: one of the 72 of the table, or "keycode-" and a decimal
/// number up to 65535. Names are lower case.
std::optional<std::uint16_t> keyCode(std::string_view name);

}  // namespace quil
