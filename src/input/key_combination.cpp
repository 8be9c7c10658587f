#include "input/key_combination.h"

#include <algorithm>
#include <charconv>
#include <string>
#include <unordered_map>

#include "platform/event_posting.h"
#include "platform/virtual_keys.h"
#include "text/characters.h"

namespace quil {
namespace {

constexpr std::string_view kKeyCodePrefix = "keycode-";

using KeyCodes = std::unordered_map<std::string_view, std::uint16_t>;

const KeyCodes& keyCodes() {
    // clang-format off
    static const KeyCodes table = {
        {"a", virtual_key::a}, {"s", virtual_key::s}, {"d", virtual_key::d}, {"f", virtual_key::f},
        {"h", virtual_key::h}, {"g", virtual_key::g}, {"z", virtual_key::z}, {"x", virtual_key::x},
        {"c", virtual_key::c}, {"v", virtual_key::v}, {"b", virtual_key::b}, {"q", virtual_key::q},
        {"w", virtual_key::w}, {"e", virtual_key::e}, {"r", virtual_key::r}, {"y", virtual_key::y},
        {"t", virtual_key::t}, {"o", virtual_key::o}, {"u", virtual_key::u}, {"i", virtual_key::i},
        {"p", virtual_key::p}, {"l", virtual_key::l}, {"j", virtual_key::j}, {"k", virtual_key::k},
        {"n", virtual_key::n}, {"m", virtual_key::m}, {"1", virtual_key::digit1},
        {"2", virtual_key::digit2}, {"3", virtual_key::digit3}, {"4", virtual_key::digit4},
        {"6", virtual_key::digit6}, {"5", virtual_key::digit5}, {"9", virtual_key::digit9},
        {"7", virtual_key::digit7}, {"8", virtual_key::digit8}, {"0", virtual_key::digit0},
        {"=", virtual_key::equal}, {"-", virtual_key::minus}, {"]", virtual_key::rightBracket},
        {"[", virtual_key::leftBracket}, {"'", virtual_key::quote}, {";", virtual_key::semicolon},
        {"\\", virtual_key::backslash}, {",", virtual_key::comma}, {"/", virtual_key::slash},
        {".", virtual_key::period}, {"`", virtual_key::grave}, {"return", virtual_key::returnKey},
        {"tab", virtual_key::tab}, {"space", virtual_key::space},
        {"delete", virtual_key::deleteKey}, {"escape", virtual_key::escape},
        {"left", virtual_key::leftArrow}, {"right", virtual_key::rightArrow},
        {"down", virtual_key::downArrow}, {"up", virtual_key::upArrow}, {"home", virtual_key::home},
        {"end", virtual_key::end}, {"pageup", virtual_key::pageUp},
        {"pagedown", virtual_key::pageDown}, {"f1", virtual_key::f1}, {"f2", virtual_key::f2},
        {"f3", virtual_key::f3}, {"f4", virtual_key::f4}, {"f5", virtual_key::f5},
        {"f6", virtual_key::f6}, {"f7", virtual_key::f7}, {"f8", virtual_key::f8},
        {"f9", virtual_key::f9}, {"f10", virtual_key::f10}, {"f11", virtual_key::f11},
        {"f12", virtual_key::f12},
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

/// Calls `use` with every piece between "+", but for empty ones.
template <typename Use>
void forEachPiece(std::string_view text, const Use& use) {
    while (!text.empty()) {
        const std::string_view piece = text.substr(0, text.find('+'));
        text.remove_prefix(std::min(piece.size() + 1, text.size()));
        if (!piece.empty()) use(piece);
    }
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
    KeyCombination combination;
    std::string_view key;
    forEachPiece(lowered, [&](std::string_view piece) {
        if (const auto flag = modifierFlag(piece)) {
            combination.flags |= *flag;
        } else {
            key = piece;
        }
    });
    const auto code = keyCode(key);
    if (!code) return {};
    combination.keyCode = *code;
    return combination;
}

std::optional<std::uint64_t> parseModifiers(std::string_view modifiers) {
    const std::string lowered = lowercased(modifiers);
    std::uint64_t flags = 0;
    bool areKnown = true;
    forEachPiece(lowered, [&](std::string_view piece) {
        const auto flag = modifierFlag(piece);
        flags |= flag.value_or(0);
        areKnown = areKnown && flag;
    });
    return areKnown ? std::optional(flags) : std::nullopt;
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
