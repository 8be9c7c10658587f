#include "platform/linux/x11/input/modifier_keys.h"

#include <xcb/xtest.h>

#include <optional>

#include "platform/event_posting.h"
#include "platform/linux/x11/input/crash_recovery.h"
#include "platform/linux/x11/input/synthetic_keyboard.h"
#include "platform/virtual_keys.h"

namespace quil::linux_platform {
namespace {

/// The modifier's index in the server's modifier mapping.
std::optional<xcb_map_index_t> modifierIndex(std::uint16_t keyCode) {
    switch (keyCode) {
        case virtual_key::shift:
            return XCB_MAP_INDEX_SHIFT;
        case virtual_key::control:
        case virtual_key::command:
            return XCB_MAP_INDEX_CONTROL;
        case virtual_key::option:
            return XCB_MAP_INDEX_1;
        default:
            return {};
    }
}

}  // namespace

bool isModifierKey(const PostedEvent& event) {
    const bool isKey = event.type == kEventKeyDown || event.type == kEventKeyUp;
    return isKey && !event.text && modifierIndex(event.keyCode) &&
           (event.flags != 0 || event.type == kEventKeyUp);
}

void holdModifierKey(X11Connection& connection, const PostedEvent& event, xcb_window_t runtime) {
    std::optional<SyntheticKeyboard> keyboard;
    if (enableXkb(connection)) keyboard.emplace(connection);
    const auto mapping = connection.reply(xcb_get_modifier_mapping_reply,
                                          xcb_get_modifier_mapping(connection.get()));
    const auto index = modifierIndex(event.keyCode);
    if (!mapping || !index) return;
    const xcb_keycode_t* keys = xcb_get_modifier_mapping_keycodes(mapping.get());
    const std::size_t perModifier = mapping->keycodes_per_modifier;
    for (std::size_t i = 0; i < perModifier; ++i) {
        const xcb_keycode_t key = keys[*index * perModifier + i];
        if (key == 0) continue;
        const bool isDown = event.type == kEventKeyDown;
        if (isDown) noteHeldModifier(connection, runtime, key, true);
        xcb_test_fake_input(connection.get(), isDown ? XCB_KEY_PRESS : XCB_KEY_RELEASE, key,
                            XCB_CURRENT_TIME, XCB_WINDOW_NONE, 0, 0, 0);
        if (!isDown) noteHeldModifier(connection, runtime, key, false);
        break;
    }
    keyboard.reset();
    connection.sync();
}

}  // namespace quil::linux_platform
