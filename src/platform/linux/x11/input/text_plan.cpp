#include "platform/linux/x11/input/text_plan.h"

#include <xcb/xproto.h>
#include <xkbcommon/xkbcommon.h>

#include <algorithm>
#include <bit>
#include <set>
#include <unordered_map>
#include <utility>

#include "platform/linux/x11/keyboard/keysyms.h"
#include "text/characters.h"

namespace quil::linux_platform {
namespace {

using Strokes = std::unordered_map<std::uint32_t, Stroke>;

/// Below are the keys that layouts differ in; the last of them is the key next to the left Shift.
constexpr std::size_t kFirstSpareKeyCode = 95;
constexpr char32_t kReplacement = 0xFFFD;

/// Takes the first character off the text.
char32_t takeCharacter(std::u16string_view& text) {
    const char16_t first = text.front();
    text.remove_prefix(1);
    if (!isHighSurrogate(first)) return isLowSurrogate(first) ? kReplacement : char32_t{first};
    if (text.empty() || !isLowSurrogate(text.front())) return kReplacement;
    const char16_t second = text.front();
    text.remove_prefix(1);
    return 0x10000 + ((char32_t{first} - 0xD800) << 10) + (char32_t{second} - 0xDC00);
}

/// 0 for a character that cannot be typed.
std::uint32_t keysymOf(char32_t character) {
    switch (character) {
        case '\n':
        case '\r':
            return kKeysymReturn;
        case '\t':
            return kKeysymTab;
        case '\b':
            return kKeysymBackSpace;
        case 0x1B:
            return kKeysymEscape;
        case 0x7F:
            return kKeysymDelete;
        default:
            break;
    }
    const bool isControl = character < 0x20 || (character >= 0x80 && character < 0xA0);
    if (isControl) return 0;
    return character < 0x100 ? character : kUnicodeKeysymBase + character;
}

/// The keysym in the form that `keysymOf` gives; many characters have an older one, too.
std::uint32_t usualKeysym(std::uint32_t keysym) {
    if (keysym >= kFirstKeypadKeysym && keysym <= kLastKeypadKeysym) return 0;
    return keysymOf(static_cast<char32_t>(xkb_keysym_to_utf32(keysym)));
}

/// Whether programs get several UTF-16 units for it: characters beyond U+FFFF, and those that Xlib
/// takes apart by its compose table, for which it knows no other keysym.
bool isString(std::uint32_t keysym) {
    switch (keysym - kUnicodeKeysymBase) {
        case 0x17FB:
        case 0x17FC:
        case 0x17FD:
        case 0x17FE:
        case 0x17FF:
        case 0xFEF5:
        case 0xFEF7:
        case 0xFEF9:
        case 0xFEFB:
            return true;
        default:
            return keysym > kUnicodeKeysymBase + 0xFFFF;
    }
}

std::uint8_t levelFor(const KeyboardMap::KeyType& type, std::uint8_t modifiers) {
    for (const auto& entry : type.entries) {
        if (entry.modifiers == (modifiers & type.mask)) return entry.level;
    }
    return 0;
}

/// The modifiers that programs take for a command, or that change what other keys do.
std::uint8_t commandModifiers(const KeyboardMap& map) {
    std::uint8_t modifiers = XCB_MOD_MASK_LOCK | XCB_MOD_MASK_CONTROL;
    for (const std::uint32_t keysym :
         {kKeysymMetaL, kKeysymMetaR, kKeysymAltL, kKeysymAltR, kKeysymSuperL, kKeysymSuperR,
          kKeysymHyperL, kKeysymHyperR, kKeysymNumLock}) {
        modifiers |= map.modifiersOf(keysym);
    }
    return modifiers;
}

/// The combinations of modifiers that lead to keysyms and that are no commands, the simplest first.
std::vector<std::uint8_t> textCombinations(const KeyboardMap& map) {
    const std::uint8_t commands = commandModifiers(map);
    std::set<std::uint8_t> combinations = {0};
    for (const KeyboardMap::KeyType& type : map.types) {
        for (const auto& entry : type.entries) {
            if ((entry.modifiers & commands) == 0) combinations.insert(entry.modifiers);
        }
    }
    std::vector<std::uint8_t> sorted(combinations.begin(), combinations.end());
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](auto a, auto b) { return std::popcount(a) < std::popcount(b); });
    return sorted;
}

/// The simplest way to each keysym that the layout has.
Strokes strokesOfLayout(const KeyboardMap& map, std::uint8_t group, std::uint8_t locked) {
    Strokes strokes;
    for (const std::uint8_t modifiers : textCombinations(map)) {
        for (std::size_t code = map.minKeyCode; code <= map.maxKeyCode; ++code) {
            const KeyboardMap::Key& key = map.keys[code];
            const auto keyGroup = key.group(group);
            if (!keyGroup || key.modifiers != 0) continue;
            const std::size_t type = key.types[*keyGroup];
            if (type >= map.types.size()) continue;
            const auto level =
                levelFor(map.types[type], static_cast<std::uint8_t>(modifiers | locked));
            const std::uint32_t keysym = usualKeysym(key.keysym(*keyGroup, level));
            if (keysym != 0) {
                strokes.try_emplace(
                    keysym, Stroke{static_cast<std::uint8_t>(code), modifiers, isString(keysym)});
            }
        }
    }
    return strokes;
}

/// Assigns the keysym to the next free level of a spare key.
Stroke assign(SpareKeysyms& keysyms, const SpareKeys& spare, std::size_t index,
              std::uint32_t keysym) {
    const std::uint8_t level = spare.levels[index / spare.keyCodes.size()];
    keysyms.resize(spare.levels.size());
    keysyms[level].push_back(keysym);
    return {spare.keyCodes[keysyms[level].size() - 1], spare.combinations[level], isString(keysym)};
}

/// The combinations that lead to the type's levels; empty when some level has none.
std::vector<std::uint8_t> combinationsOf(const KeyboardMap::KeyType& type) {
    std::vector<std::uint8_t> combinations(type.levels, 0);
    for (const auto& entry : type.entries) {
        if (entry.level < type.levels) combinations[entry.level] = entry.modifiers;
    }
    const bool isWhole =
        std::all_of(combinations.begin() + 1, combinations.end(), [](auto mods) { return mods; });
    return isWhole ? combinations : std::vector<std::uint8_t>();
}

/// Chooses the key type with the most levels that needs no commands. It is one of those that are
/// there: Xlib would not notice that a type has become another one.
void chooseType(SpareKeys& spare, const KeyboardMap& map) {
    const std::uint8_t commands = commandModifiers(map);
    for (std::size_t i = 0; i < map.types.size(); ++i) {
        auto combinations = combinationsOf(map.types[i]);
        const bool isFit = (map.types[i].mask & commands) == 0;
        if (!isFit || combinations.size() <= spare.combinations.size()) continue;
        spare.type = i;
        spare.combinations = std::move(combinations);
    }
}

}  // namespace

SpareKeys findSpareKeys(const KeyboardMap& map) {
    SpareKeys spare;
    for (std::size_t code = kFirstSpareKeyCode; code <= map.maxKeyCode; ++code) {
        const KeyboardMap::Key& key = map.keys[code];
        if (key.hasKeysyms() || key.modifiers != 0) continue;
        spare.keyCodes.push_back(static_cast<std::uint8_t>(code));
    }
    chooseType(spare, map);
    for (std::size_t level = 0; level < spare.combinations.size(); ++level) {
        spare.levels.push_back(static_cast<std::uint8_t>(level));
    }
    std::stable_partition(spare.levels.begin(), spare.levels.end(), [&](std::uint8_t level) {
        return (spare.combinations[level] & XCB_MOD_MASK_SHIFT) == 0;
    });
    return spare;
}

std::vector<std::uint32_t> keysymsToType(std::u16string_view text, bool asUnits) {
    std::vector<std::uint32_t> keysyms;
    keysyms.reserve(text.size());
    bool wasCarriageReturn = false;
    while (!text.empty()) {
        const std::u16string_view before = text;
        const char32_t character = takeCharacter(text);
        if (asUnits && character > 0xFFFF) {
            for (const char16_t unit : before.substr(0, 2)) {
                keysyms.push_back(kUnicodeKeysymBase + unit);
            }
            continue;
        }
        const bool endsLineBreak = wasCarriageReturn && character == '\n';
        wasCarriageReturn = character == '\r';
        const std::uint32_t keysym = keysymOf(character);
        if (keysym != 0 && !endsLineBreak) keysyms.push_back(keysym);
    }
    return keysyms;
}

std::vector<TextBatch> planText(const std::vector<std::uint32_t>& keysyms, const KeyboardMap& map,
                                std::uint8_t group, std::uint8_t locked, const SpareKeys& spare) {
    const Strokes layout = strokesOfLayout(map, group, locked);
    Strokes assigned;
    std::vector<TextBatch> batches(1);
    for (const std::uint32_t keysym : keysyms) {
        if (const auto stroke = layout.find(keysym); stroke != layout.end()) {
            batches.back().strokes.push_back(stroke->second);
            continue;
        }
        auto stroke = assigned.find(keysym);
        if (stroke == assigned.end()) {
            if (spare.capacity() == 0) {
                batches.back().strokes.push_back({});
                continue;
            }
            if (assigned.size() == spare.capacity()) {
                assigned.clear();
                batches.emplace_back();
            }
            const Stroke added = assign(batches.back().keysyms, spare, assigned.size(), keysym);
            stroke = assigned.emplace(keysym, added).first;
        }
        batches.back().strokes.push_back(stroke->second);
    }
    return batches;
}

}  // namespace quil::linux_platform
