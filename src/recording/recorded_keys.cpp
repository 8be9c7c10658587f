#include "recording/recorded_keys.h"

#include <cstdint>

#include "platform/event_posting.h"
#include "text/characters.h"

namespace quil {
namespace {

constexpr std::uint64_t kCombinationFlags =
    kEventFlagMaskCommand | kEventFlagMaskControl | kEventFlagMaskAlternate;

struct Modifier {
    std::uint64_t flag;
    const char* name;
};

/// In the order of their writing.
constexpr Modifier kModifiers[] = {{kEventFlagMaskCommand, "cmd+"},
                                   {kEventFlagMaskControl, "ctrl+"},
                                   {kEventFlagMaskAlternate, "alt+"},
                                   {kEventFlagMaskShift, "shift+"}};

}  // namespace

std::optional<std::string> plainText(const TappedEvent& keyDown) {
    if (keyDown.flags() & kCombinationFlags) return {};
    auto characters = keyDown.characters();
    if (!characters || characters->empty() || hasControlCharacter(*characters)) return {};
    return characters;
}

std::string keyCombination(const TappedEvent& keyDown) {
    const std::uint64_t flags = keyDown.flags();
    std::string combination;
    for (const Modifier& modifier : kModifiers) {
        if (flags & modifier.flag) combination += modifier.name;
    }
    return combination + "keycode-" +
           std::to_string(keyDown.integerValueField(kKeyboardEventKeycode));
}

}  // namespace quil
