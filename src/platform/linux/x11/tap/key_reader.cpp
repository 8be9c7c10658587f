#include "platform/linux/x11/tap/key_reader.h"

#include <xcb/xproto.h>
#include <xkbcommon/xkbcommon-keysyms.h>

#include <algorithm>
#include <utility>

#include "platform/event_posting.h"
#include "platform/linux/x11/keyboard/key_codes.h"
#include "platform/linux/x11/keyboard/xkb_protocol.h"

namespace quil::linux_platform {
namespace {

constexpr std::uint16_t kChanges =
    XCB_XKB_EVENT_TYPE_NEW_KEYBOARD_NOTIFY | XCB_XKB_EVENT_TYPE_MAP_NOTIFY;

/// The keyboard group that a state holds.
std::uint8_t groupOf(std::uint16_t state) {
    return (state >> 13) & 3;
}

bool isModifierKeysym(std::uint32_t keysym) {
    return (keysym >= XKB_KEY_Shift_L && keysym <= XKB_KEY_Hyper_R) ||
           (keysym >= XKB_KEY_ISO_Lock && keysym <= XKB_KEY_ISO_Level5_Lock) ||
           keysym == XKB_KEY_Mode_switch || keysym == XKB_KEY_Num_Lock;
}

/// The keysym that the core protocol's rules choose among a key's, two of each group.
std::uint32_t coreKeysym(const std::vector<std::uint32_t>& keysyms, std::uint16_t state) {
    const auto at = [&](std::size_t index) {
        return index < keysyms.size() ? keysyms[index] : std::uint32_t{0};
    };
    const std::size_t group = groupOf(state) > 0 && (at(2) != 0 || at(3) != 0) ? 2 : 0;
    std::uint32_t plain = at(group);
    std::uint32_t shifted = at(group + 1);
    if (shifted == 0) {
        // A letter that stands alone stands for both of its forms, whichever it is.
        shifted = xkb_keysym_to_upper(plain);
        plain = xkb_keysym_to_lower(plain);
    }
    const bool isLocked = (state & XCB_MOD_MASK_LOCK) && xkb_keysym_to_upper(plain) == shifted;
    return ((state & XCB_MOD_MASK_SHIFT) != 0) != isLocked ? shifted : plain;
}

}  // namespace

KeyReader::KeyReader(std::shared_ptr<X11Connection> connection)
    : connection_(std::move(connection)) {
    if (!enableXkb(*connection_)) return;
    xcb_xkb_select_events(connection_->get(), kCoreKeyboard, kChanges, 0, kChanges, 0xFF, 0xFF,
                          nullptr);
    xcb_flush(connection_->get());
}

void KeyReader::followKeyboard() {
    // Whatever event comes here tells of another keyboard or map.
    while (XcbPointer<xcb_generic_event_t>(xcb_poll_for_event(connection_->get()))) {
        isMapOutdated_ = true;
    }
}

void KeyReader::readMap() {
    isMapOutdated_ = false;
    auto map = readKeyboardMap(*connection_, kCoreKeyboard);
    if (!map) return;
    map_ = std::move(*map);
    option_ = map_.modifiersOf(XKB_KEY_Alt_L) | map_.modifiersOf(XKB_KEY_Alt_R);
    foreign_ = static_cast<std::uint8_t>(
        (map_.modifiersOf(XKB_KEY_Super_L) | map_.modifiersOf(XKB_KEY_Super_R)) & ~option_);
}

void KeyReader::keysymsChanged(const KeysymsChange& change) {
    for (std::size_t i = 0; (i + 1) * change.perKey <= change.keysyms.size(); ++i) {
        const std::size_t key = change.firstKey + i;
        if (change.perKey == 0 || key >= changedKeysyms_.size()) return;
        const auto first = change.keysyms.begin() + static_cast<std::ptrdiff_t>(i * change.perKey);
        changedKeysyms_[key].emplace(first, first + change.perKey);
    }
}

void KeyReader::keyboardChanged() {
    isMapOutdated_ = true;
    changedKeysyms_ = {};
}

std::uint64_t KeyReader::flags(std::uint16_t state) {
    if (isMapOutdated_) readMap();
    std::uint64_t flags = 0;
    if (state & XCB_MOD_MASK_LOCK) flags |= kEventFlagMaskAlphaShift;
    if (state & XCB_MOD_MASK_SHIFT) flags |= kEventFlagMaskShift;
    if (state & XCB_MOD_MASK_CONTROL) flags |= kEventFlagMaskControl;
    if (state & option_) flags |= kEventFlagMaskAlternate;
    return flags;
}

std::optional<KeyPress> KeyReader::press(std::uint8_t keyCode, std::uint16_t state) {
    KeyPress press{
        .virtualKeyCode = virtualKeyCode(keyCode), .flags = flags(state), .characters = {}};
    const std::uint32_t keysym = this->keysym(keyCode, state);
    if (isModifier(keyCode, keysym)) return {};
    if (state & foreign_) return {};
    if (press.flags & (kEventFlagMaskControl | kEventFlagMaskAlternate)) {
        press.characters = keysymText(keysym);
        return press;
    }
    Compose::Result composed = compose_.type(keysym);
    if (composed.isPending) return {};
    press.characters = std::move(composed.text);
    return press;
}

bool KeyReader::isModifier(std::uint8_t keyCode, std::uint32_t keysym) const {
    return isModifierKeysym(keysym) ||
           (map_.keys[keyCode].modifiers != 0 && !changedKeysyms_[keyCode]);
}

std::uint32_t KeyReader::keysym(std::uint8_t keyCode, std::uint16_t state) const {
    const auto& changed = changedKeysyms_[keyCode];
    return changed ? coreKeysym(*changed, state) : mappedKeysym(map_.keys[keyCode], state);
}

std::uint32_t KeyReader::mappedKeysym(const KeyboardMap::Key& key, std::uint16_t state) const {
    const auto group = key.group(groupOf(state));
    if (!group || key.types[*group] >= map_.types.size()) return 0;
    const KeyboardMap::KeyType& type = map_.types[key.types[*group]];
    const auto entry =
        std::ranges::find(type.entries, state & type.mask, &KeyboardMap::LevelEntry::modifiers);
    const std::uint32_t keysym =
        key.keysym(*group, entry == type.entries.end() ? std::uint8_t{0} : entry->level);
    const bool isCapital = (state & XCB_MOD_MASK_LOCK) && !(type.mask & XCB_MOD_MASK_LOCK);
    return isCapital ? xkb_keysym_to_upper(keysym) : keysym;
}

}  // namespace quil::linux_platform
