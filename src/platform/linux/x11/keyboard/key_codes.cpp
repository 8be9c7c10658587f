#include "platform/linux/x11/keyboard/key_codes.h"

#include <linux/input-event-codes.h>

#include <array>

#include "platform/virtual_keys.h"

namespace quil::linux_platform {
namespace {

struct Key {
    std::uint8_t virtualKeyCode;
    std::uint8_t evdevCode;
};

constexpr std::uint8_t kXOffset = 8;

// clang-format off
/// When a number occurs twice on one side, its first row is the one that counts in that direction.
constexpr Key kKeys[] = {
    // Letters
    {virtual_key::a, KEY_A}, {virtual_key::b, KEY_B}, {virtual_key::c, KEY_C},
    {virtual_key::d, KEY_D}, {virtual_key::e, KEY_E}, {virtual_key::f, KEY_F},
    {virtual_key::g, KEY_G}, {virtual_key::h, KEY_H}, {virtual_key::i, KEY_I},
    {virtual_key::j, KEY_J}, {virtual_key::k, KEY_K}, {virtual_key::l, KEY_L},
    {virtual_key::m, KEY_M}, {virtual_key::n, KEY_N}, {virtual_key::o, KEY_O},
    {virtual_key::p, KEY_P}, {virtual_key::q, KEY_Q}, {virtual_key::r, KEY_R},
    {virtual_key::s, KEY_S}, {virtual_key::t, KEY_T}, {virtual_key::u, KEY_U},
    {virtual_key::v, KEY_V}, {virtual_key::w, KEY_W}, {virtual_key::x, KEY_X},
    {virtual_key::y, KEY_Y}, {virtual_key::z, KEY_Z},

    // Digits and punctuation of the main block
    {virtual_key::digit0, KEY_0}, {virtual_key::digit1, KEY_1}, {virtual_key::digit2, KEY_2},
    {virtual_key::digit3, KEY_3}, {virtual_key::digit4, KEY_4}, {virtual_key::digit5, KEY_5},
    {virtual_key::digit6, KEY_6}, {virtual_key::digit7, KEY_7}, {virtual_key::digit8, KEY_8},
    {virtual_key::digit9, KEY_9}, {virtual_key::equal, KEY_EQUAL}, {virtual_key::minus, KEY_MINUS},
    {virtual_key::leftBracket, KEY_LEFTBRACE}, {virtual_key::rightBracket, KEY_RIGHTBRACE},
    {virtual_key::quote, KEY_APOSTROPHE}, {virtual_key::semicolon, KEY_SEMICOLON},
    {virtual_key::backslash, KEY_BACKSLASH}, {virtual_key::comma, KEY_COMMA},
    {virtual_key::slash, KEY_SLASH}, {virtual_key::period, KEY_DOT},
    {virtual_key::grave, KEY_GRAVE},

    // The additional key of ISO keyboards, the additional keys of JIS keyboards
    {virtual_key::isoSection, KEY_102ND}, {virtual_key::jisYen, KEY_YEN},
    {virtual_key::jisUnderscore, KEY_RO}, {virtual_key::jisEisu, KEY_HANJA},
    {virtual_key::jisKana, KEY_HANGEUL},

    // Keys that type or move
    {virtual_key::returnKey, KEY_ENTER}, {virtual_key::tab, KEY_TAB},
    {virtual_key::space, KEY_SPACE}, {virtual_key::deleteKey, KEY_BACKSPACE},
    {virtual_key::escape, KEY_ESC}, {virtual_key::forwardDelete, KEY_DELETE},
    {virtual_key::help, KEY_INSERT}, {virtual_key::help, KEY_HELP}, {virtual_key::home, KEY_HOME},
    {virtual_key::end, KEY_END}, {virtual_key::pageUp, KEY_PAGEUP},
    {virtual_key::pageDown, KEY_PAGEDOWN}, {virtual_key::leftArrow, KEY_LEFT},
    {virtual_key::rightArrow, KEY_RIGHT}, {virtual_key::downArrow, KEY_DOWN},
    {virtual_key::upArrow, KEY_UP}, {virtual_key::contextualMenu, KEY_COMPOSE},

    // Modifier keys
    {virtual_key::command, KEY_LEFTMETA}, {virtual_key::rightCommand, KEY_RIGHTMETA},
    {virtual_key::shift, KEY_LEFTSHIFT}, {virtual_key::rightShift, KEY_RIGHTSHIFT},
    {virtual_key::option, KEY_LEFTALT}, {virtual_key::rightOption, KEY_RIGHTALT},
    {virtual_key::control, KEY_LEFTCTRL}, {virtual_key::rightControl, KEY_RIGHTCTRL},
    {virtual_key::capsLock, KEY_CAPSLOCK},

    // Function keys
    {virtual_key::f1, KEY_F1}, {virtual_key::f2, KEY_F2}, {virtual_key::f3, KEY_F3},
    {virtual_key::f4, KEY_F4}, {virtual_key::f5, KEY_F5}, {virtual_key::f6, KEY_F6},
    {virtual_key::f7, KEY_F7}, {virtual_key::f8, KEY_F8}, {virtual_key::f9, KEY_F9},
    {virtual_key::f10, KEY_F10}, {virtual_key::f11, KEY_F11}, {virtual_key::f12, KEY_F12},
    {virtual_key::f13, KEY_F13}, {virtual_key::f14, KEY_F14}, {virtual_key::f15, KEY_F15},
    {virtual_key::f16, KEY_F16}, {virtual_key::f17, KEY_F17}, {virtual_key::f18, KEY_F18},
    {virtual_key::f19, KEY_F19}, {virtual_key::f20, KEY_F20},

    // Keypad
    {virtual_key::keypad0, KEY_KP0}, {virtual_key::keypad1, KEY_KP1},
    {virtual_key::keypad2, KEY_KP2}, {virtual_key::keypad3, KEY_KP3},
    {virtual_key::keypad4, KEY_KP4}, {virtual_key::keypad5, KEY_KP5},
    {virtual_key::keypad6, KEY_KP6}, {virtual_key::keypad7, KEY_KP7},
    {virtual_key::keypad8, KEY_KP8}, {virtual_key::keypad9, KEY_KP9},
    {virtual_key::keypadDecimal, KEY_KPDOT}, {virtual_key::keypadMultiply, KEY_KPASTERISK},
    {virtual_key::keypadPlus, KEY_KPPLUS}, {virtual_key::keypadClear, KEY_NUMLOCK},
    {virtual_key::keypadDivide, KEY_KPSLASH}, {virtual_key::keypadEnter, KEY_KPENTER},
    {virtual_key::keypadMinus, KEY_KPMINUS}, {virtual_key::keypadEquals, KEY_KPEQUAL},
    {virtual_key::jisKeypadComma, KEY_KPCOMMA}, {virtual_key::jisKeypadComma, KEY_KPJPCOMMA},

    // Sound, brightness, overviews
    {virtual_key::volumeUp, KEY_VOLUMEUP}, {virtual_key::volumeDown, KEY_VOLUMEDOWN},
    {virtual_key::mute, KEY_MUTE}, {virtual_key::brightnessUp, KEY_BRIGHTNESSUP},
    {virtual_key::brightnessDown, KEY_BRIGHTNESSDOWN}, {virtual_key::missionControl, KEY_SCALE},
    {virtual_key::launchpad, KEY_DASHBOARD},
};
// clang-format on

/// Both directions, by number; 0 where there is no key.
struct Tables {
    std::array<std::uint8_t, 256> xByVirtual{};
    std::array<std::uint16_t, 256> virtualByX{};
};

constexpr Tables kTables = [] {
    Tables tables;
    for (std::size_t x = 0; x < tables.virtualByX.size(); ++x) {
        tables.virtualByX[x] = static_cast<std::uint16_t>(kForeignKeyBase + x);
    }
    for (const Key& key : kKeys) {
        const auto x = static_cast<std::uint8_t>(key.evdevCode + kXOffset);
        if (tables.xByVirtual[key.virtualKeyCode] == 0) tables.xByVirtual[key.virtualKeyCode] = x;
        if (tables.virtualByX[x] >= kForeignKeyBase) tables.virtualByX[x] = key.virtualKeyCode;
    }
    return tables;
}();

}  // namespace

std::optional<std::uint8_t> xKeyCode(std::uint16_t virtualKeyCode) {
    if (virtualKeyCode < kTables.xByVirtual.size()) {
        const std::uint8_t x = kTables.xByVirtual[virtualKeyCode];
        return x != 0 ? std::optional(x) : std::nullopt;
    }
    if (virtualKeyCode >= kForeignKeyBase + kXOffset && virtualKeyCode <= kForeignKeyBase + 0xFF) {
        return static_cast<std::uint8_t>(virtualKeyCode - kForeignKeyBase);
    }
    return {};
}

std::uint16_t virtualKeyCode(std::uint8_t xKeyCode) {
    return kTables.virtualByX[xKeyCode];
}

}  // namespace quil::linux_platform
