#include "platform/linux/x11/keyboard/keyboard_map.h"

#include <algorithm>

#include "platform/linux/x11/keyboard/xkb_protocol.h"

namespace quil::linux_platform {
namespace {

constexpr std::uint16_t kWanted =
    XCB_XKB_MAP_PART_KEY_TYPES | XCB_XKB_MAP_PART_KEY_SYMS | XCB_XKB_MAP_PART_MODIFIER_MAP;

KeyboardMap::KeyType readType(const xcb_xkb_key_type_t& wire) {
    KeyboardMap::KeyType type{.mask = wire.mods_mask, .levels = wire.numLevels, .entries = {}};
    const xcb_xkb_kt_map_entry_t* entries = xcb_xkb_key_type_map(&wire);
    for (int i = 0; i < xcb_xkb_key_type_map_length(&wire); ++i) {
        if (entries[i].active) type.entries.push_back({entries[i].mods_mask, entries[i].level});
    }
    return type;
}

void readKeysyms(KeyboardMap::Key& key, const xcb_xkb_key_sym_map_t& wire) {
    std::copy(std::begin(wire.kt_index), std::end(wire.kt_index), key.types.begin());
    key.groupInfo = wire.groupInfo;
    key.width = wire.width;
    const xcb_keysym_t* keysyms = xcb_xkb_key_sym_map_syms(&wire);
    key.keysyms.assign(keysyms, keysyms + xcb_xkb_key_sym_map_syms_length(&wire));
}

}  // namespace

bool KeyboardMap::Key::hasKeysyms() const {
    return std::any_of(keysyms.begin(), keysyms.end(), [](auto keysym) { return keysym != 0; });
}

std::optional<std::uint8_t> KeyboardMap::Key::group(std::uint8_t keyboardGroup) const {
    const std::uint8_t count = groups();
    if (count == 0) return {};
    if (keyboardGroup < count) return keyboardGroup;
    const std::uint8_t rule = groupInfo & 0xC0;
    if (rule == XCB_XKB_GROUPS_WRAP_CLAMP_INTO_RANGE) return static_cast<std::uint8_t>(count - 1);
    if (rule == XCB_XKB_GROUPS_WRAP_REDIRECT_INTO_RANGE) {
        const std::uint8_t target = (groupInfo >> 4) & 0x03;
        return target < count ? target : std::uint8_t{0};
    }
    return static_cast<std::uint8_t>(keyboardGroup % count);
}

std::uint32_t KeyboardMap::Key::keysym(std::uint8_t group, std::uint8_t level) const {
    const std::size_t index = std::size_t{group} * width + level;
    return level < width && index < keysyms.size() ? keysyms[index] : 0;
}

std::optional<std::uint8_t> KeyboardMap::keyWithKeysym(std::uint32_t keysym) const {
    std::optional<std::uint8_t> found;
    for (std::size_t code = minKeyCode; code <= maxKeyCode; ++code) {
        if (keys[code].keysym(0, 0) != keysym) continue;
        if (!found || keys[*found].modifiers == 0) found = static_cast<std::uint8_t>(code);
        if (keys[*found].modifiers != 0) break;
    }
    return found;
}

std::uint8_t KeyboardMap::modifiersOf(std::uint32_t keysym) const {
    std::uint8_t modifiers = 0;
    for (const Key& key : keys) {
        if (std::find(key.keysyms.begin(), key.keysyms.end(), keysym) != key.keysyms.end()) {
            modifiers |= key.modifiers;
        }
    }
    return modifiers;
}

std::optional<KeyboardMap> readKeyboardMap(X11Connection& connection, std::uint16_t device) {
    const auto reply = connection.reply(
        xcb_xkb_get_map_reply, xcb_xkb_get_map(connection.get(), device, kWanted, 0, 0, 0, 0, 0, 0,
                                               0, 0, 0, 0, 0, 0, 0, 0, 0, 0));
    if (!reply) return {};
    xcb_xkb_get_map_map_t parts;
    xcb_xkb_get_map_map_unpack(xcb_xkb_get_map_map(reply.get()), reply->nTypes, reply->nKeySyms,
                               reply->nKeyActions, reply->totalActions, reply->totalKeyBehaviors,
                               reply->virtualMods, reply->totalKeyExplicit, reply->totalModMapKeys,
                               reply->totalVModMapKeys, reply->present, &parts);
    KeyboardMap map;
    map.minKeyCode = reply->minKeyCode;
    map.maxKeyCode = reply->maxKeyCode;
    for (auto type = xcb_xkb_get_map_map_types_rtrn_iterator(reply.get(), &parts); type.rem > 0;
         xcb_xkb_key_type_next(&type)) {
        map.types.push_back(readType(*type.data));
    }
    std::size_t code = reply->firstKeySym;
    for (auto key = xcb_xkb_get_map_map_syms_rtrn_iterator(reply.get(), &parts);
         key.rem > 0 && code < map.keys.size(); xcb_xkb_key_sym_map_next(&key)) {
        readKeysyms(map.keys[code++], *key.data);
    }
    for (auto key = xcb_xkb_get_map_map_modmap_rtrn_iterator(reply.get(), &parts); key.rem > 0;
         xcb_xkb_key_mod_map_next(&key)) {
        map.keys[key.data->keycode].modifiers = key.data->mods;
    }
    return map;
}

}  // namespace quil::linux_platform
