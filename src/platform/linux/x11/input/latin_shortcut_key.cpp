#include "platform/linux/x11/input/latin_shortcut_key.h"

#include <xcb/xproto.h>

#include <string_view>

#include "platform/linux/x11/input/text_plan.h"

namespace quil::linux_platform {
namespace {

struct KeyRow {
    std::uint8_t firstKeyCode;
    std::string_view plain;
    std::string_view shifted;
};

constexpr KeyRow kRows[] = {
    {10, "1234567890-=", "!@#$%^&*()_+"},
    {24, "qwertyuiop[]", "QWERTYUIOP{}"},
    {38, "asdfghjkl;'`", "ASDFGHJKL:\"~"},
    {51, "\\zxcvbnm,./", "|ZXCVBNM<>?"},
};
/// The key next to the left Shift, which only some keyboards have.
constexpr std::size_t kLastTypingKey = 94;
constexpr std::uint8_t kMaximumGroups = 4;
constexpr std::chrono::milliseconds kPingTimeout{2000};

bool isLetter(std::uint8_t keysym) {
    return keysym >= 'a' && keysym <= 'z';
}

bool hasLatinKeysym(const KeyboardMap::Key& key) {
    for (std::uint8_t group = 0; group < key.groups(); ++group) {
        const std::uint32_t keysym = key.keysym(group, 0);
        if (keysym > 0x20 && keysym < 0x7F) return true;
    }
    return false;
}

SpareKeysyms onFirstKey(const SpareKeys& keys, LatinKeysyms keysyms) {
    SpareKeysyms levels(keys.levels.size());
    for (const std::uint8_t level : keys.levels) {
        const bool hasShift = (keys.combinations[level] & XCB_MOD_MASK_SHIFT) != 0;
        levels[level].push_back(hasShift ? keysyms.shifted : keysyms.plain);
    }
    return levels;
}

}  // namespace

std::optional<LatinKeysyms> latinKeysyms(std::uint8_t keyCode) {
    for (const KeyRow& row : kRows) {
        const auto index = static_cast<std::size_t>(keyCode - row.firstKeyCode);
        if (keyCode < row.firstKeyCode || index >= row.plain.size()) continue;
        return LatinKeysyms{static_cast<std::uint8_t>(row.plain[index]),
                            static_cast<std::uint8_t>(row.shifted[index])};
    }
    return {};
}

std::optional<LatinKeysyms> missingLatinKeysyms(const KeyboardMap& map, std::uint8_t keyCode) {
    if (hasLatinKeysym(map.keys[keyCode])) return {};
    return latinKeysyms(keyCode);
}

std::optional<std::uint8_t> keyOfShortcut(const KeyboardMap& map, std::uint8_t group,
                                          std::uint8_t keyCode) {
    const auto keysyms = latinKeysyms(keyCode);
    if (!keysyms || !isLetter(keysyms->plain)) return {};
    const auto hasIt = [&](std::size_t code, std::optional<std::uint8_t> keyGroup) {
        return keyGroup && map.keys[code].keysym(*keyGroup, 0) == keysyms->plain;
    };
    const auto find = [&](auto groupOf) -> std::optional<std::uint8_t> {
        if (hasIt(keyCode, groupOf(map.keys[keyCode]))) return keyCode;
        for (std::size_t code = kRows[0].firstKeyCode; code <= kLastTypingKey; ++code) {
            if (hasIt(code, groupOf(map.keys[code]))) return static_cast<std::uint8_t>(code);
        }
        return {};
    };
    if (const auto key = find([&](const auto& other) { return other.group(group); })) return key;
    for (std::uint8_t other = 0; other < kMaximumGroups; ++other) {
        const auto key = find([&](const KeyboardMap::Key& candidate) {
            return other < candidate.groups() ? std::optional(other) : std::nullopt;
        });
        if (key) return key;
    }
    return {};
}

LatinShortcutKey::LatinShortcutKey(KeyboardSession& session, LatinKeysyms keysyms)
    : client_(session.connection()), spare_(session.keyboard(), session.shownMap()) {
    if (spare_.keys().capacity() == 0) return;
    if (spare_.isMapped()) {
        client_.sendPing();
        client_.waitForPings(0, kPingTimeout);
    }
    spare_.map(onFirstKey(spare_.keys(), keysyms));
}

LatinShortcutKey::~LatinShortcutKey() {
    if (!spare_.isMapped()) return;
    client_.sendPing();
    if (client_.waitForPings(0, kPingTimeout)) spare_.unmap();
}

std::optional<std::uint8_t> LatinShortcutKey::keyCode() const {
    if (spare_.keys().capacity() == 0) return {};
    return spare_.keys().keyCodes.front();
}

}  // namespace quil::linux_platform
