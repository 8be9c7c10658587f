#include "platform/linux/x11/input/command_key.h"

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
constexpr std::chrono::milliseconds kPatience{2000};

bool hasLatinSymbol(const KeyboardMap::Key& key) {
    for (std::uint8_t group = 0; group < key.groups(); ++group) {
        const std::uint32_t symbol = key.symbol(group, 0);
        if (symbol > 0x20 && symbol < 0x7F) return true;
    }
    return false;
}

SpareSymbols onFirstKey(const SpareKeys& keys, LatinSymbols symbols) {
    SpareSymbols levels(keys.levels.size());
    for (const std::uint8_t level : keys.levels) {
        const bool hasShift = (keys.combinations[level] & XCB_MOD_MASK_SHIFT) != 0;
        levels[level].push_back(hasShift ? symbols.shifted : symbols.plain);
    }
    return levels;
}

}  // namespace

std::optional<LatinSymbols> missingLatinSymbols(const KeyboardMap& map, std::uint8_t keyCode) {
    if (hasLatinSymbol(map.keys[keyCode])) return {};
    for (const KeyRow& row : kRows) {
        const auto place = static_cast<std::size_t>(keyCode - row.firstKeyCode);
        if (keyCode < row.firstKeyCode || place >= row.plain.size()) continue;
        return LatinSymbols{static_cast<std::uint8_t>(row.plain[place]),
                            static_cast<std::uint8_t>(row.shifted[place])};
    }
    return {};
}

CommandKey::CommandKey(KeyboardSession& session, LatinSymbols symbols)
    : receiver_(session.connection()), spare_(session.connection(), session.map()) {
    if (spare_.keys().capacity() == 0) return;
    if (spare_.isMapped()) {
        receiver_.mark();
        receiver_.waitForMarks(0, kPatience);
    }
    spare_.map(onFirstKey(spare_.keys(), symbols));
}

CommandKey::~CommandKey() {
    if (!spare_.isMapped()) return;
    receiver_.mark();
    if (receiver_.waitForMarks(0, kPatience)) spare_.unmap();
}

std::optional<std::uint8_t> CommandKey::keyCode() const {
    if (spare_.keys().capacity() == 0) return {};
    return spare_.keys().keyCodes.front();
}

}  // namespace quil::linux_platform
