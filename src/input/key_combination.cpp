#include "input/key_combination.h"

#include <algorithm>
#include <charconv>
#include <string>
#include <unordered_map>

#include "platform/event_posting.h"
#include "text/characters.h"

namespace quil {
namespace {

constexpr std::string_view kKeyCodePrefix = "keycode-";

using KeyCodes = std::unordered_map<std::string_view, std::uint16_t>;

/// Virtual key codes as numbered by the Carbon event manager (kVK_…, Events.h).
const KeyCodes& keyCodes() {
    // clang-format off
    static const KeyCodes table = {
        {"a", 0}, {"s", 1}, {"d", 2}, {"f", 3}, {"h", 4}, {"g", 5}, {"z", 6}, {"x", 7}, {"c", 8},
        {"v", 9}, {"b", 11}, {"q", 12}, {"w", 13}, {"e", 14}, {"r", 15}, {"y", 16}, {"t", 17},
        {"o", 31}, {"u", 32}, {"i", 34}, {"p", 35}, {"l", 37}, {"j", 38}, {"k", 40}, {"n", 45},
        {"m", 46},
        {"1", 18}, {"2", 19}, {"3", 20}, {"4", 21}, {"6", 22}, {"5", 23}, {"9", 25}, {"7", 26},
        {"8", 28}, {"0", 29},
        {"=", 24}, {"-", 27}, {"]", 30}, {"[", 33}, {"'", 39}, {";", 41}, {"\\", 42}, {",", 43},
        {"/", 44}, {".", 47}, {"`", 50},
        {"return", 36}, {"tab", 48}, {"space", 49}, {"delete", 51}, {"escape", 53},
        {"left", 123}, {"right", 124}, {"down", 125}, {"up", 126},
        {"home", 115}, {"end", 119}, {"pageup", 116}, {"pagedown", 121},
        {"f1", 122}, {"f2", 120}, {"f3", 99}, {"f4", 118}, {"f5", 96}, {"f6", 97}, {"f7", 98},
        {"f8", 100}, {"f9", 101}, {"f10", 109}, {"f11", 103}, {"f12", 111},
    };
    // clang-format on
    return table;
}

std::optional<std::uint64_t> modifierFlag(std::string_view name) {
    static const std::unordered_map<std::string_view, std::uint64_t> flags = {
        {"cmd", kEventFlagMaskCommand},      {"command", kEventFlagMaskCommand},
        {"meta", kEventFlagMaskCommand},     {"ctrl", kEventFlagMaskControl},
        {"control", kEventFlagMaskControl},  {"alt", kEventFlagMaskAlternate},
        {"option", kEventFlagMaskAlternate}, {"shift", kEventFlagMaskShift},
    };
    const auto flag = flags.find(name);
    if (flag == flags.end()) return {};
    return flag->second;
}

std::optional<std::uint16_t> numberedKeyCode(std::string_view digits) {
    std::uint16_t code = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), code);
    if (error != std::errc() || end != digits.data() + digits.size()) return {};
    return code;
}

}  // namespace

std::optional<KeyCombination> parseKeyCombination(std::string_view combo) {
    const std::string lowered = lowercased(combo);
    std::string_view rest = lowered;
    KeyCombination combination;
    std::string_view key;
    while (!rest.empty()) {
        const std::string_view piece = rest.substr(0, rest.find('+'));
        rest.remove_prefix(std::min(piece.size() + 1, rest.size()));
        if (piece.empty()) continue;
        if (const auto flag = modifierFlag(piece)) {
            combination.flags |= *flag;
        } else {
            key = piece;
        }
    }
    const auto code = keyCode(key);
    if (!code) return {};
    combination.keyCode = *code;
    return combination;
}

std::optional<std::uint16_t> keyCode(std::string_view name) {
    if (name.starts_with(kKeyCodePrefix)) {
        if (const auto code = numberedKeyCode(name.substr(kKeyCodePrefix.size()))) return code;
    }
    const auto entry = keyCodes().find(name);
    if (entry == keyCodes().end()) return {};
    return entry->second;
}

}  // namespace quil
