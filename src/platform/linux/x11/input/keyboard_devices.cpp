#include "platform/linux/x11/input/keyboard_devices.h"

#include <xcb/xtest.h>

#include <string_view>

namespace quil::linux_platform {
namespace {

constexpr std::uint8_t kKeyClass = XCB_INPUT_INPUT_CLASS_KEY;

KeySet fromBytes(const std::uint8_t* bytes) {
    KeySet keys;
    for (std::size_t code = 0; code < keys.size(); ++code) {
        keys[code] = ((bytes[code / 8] >> (code % 8)) & 1) != 0;
    }
    return keys;
}

/// The real keyboards. The server gives its synthetic one a name of its own.
std::vector<std::uint8_t> realKeyboards(X11Connection& connection) {
    const auto version = xcb_input_xi_query_version(connection.get(), 2, 0);
    const auto cookie = xcb_input_xi_query_device(connection.get(), XCB_INPUT_DEVICE_ALL);
    connection.reply(xcb_input_xi_query_version_reply, version);
    const auto devices = connection.reply(xcb_input_xi_query_device_reply, cookie);
    if (!devices) return {};
    std::vector<std::uint8_t> found;
    for (auto device = xcb_input_xi_query_device_infos_iterator(devices.get()); device.rem > 0;
         xcb_input_xi_device_info_next(&device)) {
        const std::string_view name(
            xcb_input_xi_device_info_name(device.data),
            static_cast<std::size_t>(xcb_input_xi_device_info_name_length(device.data)));
        if (device.data->type != XCB_INPUT_DEVICE_TYPE_SLAVE_KEYBOARD) continue;
        if (name.find("XTEST") != std::string_view::npos) continue;
        found.push_back(static_cast<std::uint8_t>(device.data->deviceid));
    }
    return found;
}

KeySet keysDownOn(const xcb_input_query_device_state_reply_t& state) {
    auto classes = xcb_input_query_device_state_classes_iterator(&state);
    for (; classes.rem > 0; xcb_input_input_state_next(&classes)) {
        if (classes.data->class_id != kKeyClass) continue;
        const auto* keys = reinterpret_cast<const xcb_input_key_state_t*>(classes.data);
        return fromBytes(keys->keys);
    }
    return {};
}

}  // namespace

KeySet keysDown(X11Connection& connection) {
    const auto reply = connection.reply(xcb_query_keymap_reply, xcb_query_keymap(connection.get()));
    return reply ? fromBytes(reply->keys) : KeySet();
}

std::vector<HeldKeys> keysHeldByUser(X11Connection& connection) {
    if (!connection.hasExtension(xcb_input_id)) return {};
    const std::vector<std::uint8_t> keyboards = realKeyboards(connection);
    std::vector<xcb_input_query_device_state_cookie_t> cookies;
    cookies.reserve(keyboards.size());
    for (const std::uint8_t device : keyboards) {
        cookies.push_back(xcb_input_query_device_state(connection.get(), device));
    }
    std::vector<HeldKeys> held;
    for (std::size_t i = 0; i < keyboards.size(); ++i) {
        const auto state = connection.reply(xcb_input_query_device_state_reply, cookies[i]);
        if (state) held.push_back({keyboards[i], keysDownOn(*state)});
    }
    return held;
}

void pressHeldKey(X11Connection& connection, std::uint8_t device, std::uint8_t keyCode) {
    // The device itself has the key down and would not press it again.
    const std::uint8_t firstEvent =
        xcb_get_extension_data(connection.get(), &xcb_input_id)->first_event;
    for (const int type : {XCB_INPUT_DEVICE_KEY_RELEASE, XCB_INPUT_DEVICE_KEY_PRESS}) {
        xcb_test_fake_input(connection.get(), static_cast<std::uint8_t>(firstEvent + type), keyCode,
                            XCB_CURRENT_TIME, XCB_WINDOW_NONE, 0, 0, device);
    }
}

}  // namespace quil::linux_platform
