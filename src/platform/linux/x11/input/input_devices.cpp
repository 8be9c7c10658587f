#include "platform/linux/x11/input/input_devices.h"

#include <xcb/xtest.h>

#include <string_view>
#include <utility>

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

/// The server gives the devices that synthetic events come from a name of their own.
bool isSynthetic(const xcb_input_xi_device_info_t& device) {
    const std::string_view name(
        xcb_input_xi_device_info_name(&device),
        static_cast<std::size_t>(xcb_input_xi_device_info_name_length(&device)));
    return name.find("XTEST") != std::string_view::npos;
}

struct DevicesInUse {
    XcbPointer<xcb_input_xi_query_device_reply_t> all;
    /// The pointer that clients are taken to mean, and the keyboard that goes with it.
    std::uint16_t masterPointer = 0;
    std::uint8_t masterKeyboard = 0;
};

template <typename Look>
void eachDevice(const xcb_input_xi_query_device_reply_t& devices, Look look) {
    for (auto device = xcb_input_xi_query_device_infos_iterator(&devices); device.rem > 0;
         xcb_input_xi_device_info_next(&device)) {
        look(*device.data);
    }
}

/// Nothing when the server has no devices (X Input 2.0).
std::optional<DevicesInUse> devicesInUse(X11Connection& connection) {
    if (!connection.hasExtension(xcb_input_id)) return {};
    const auto version = xcb_input_xi_query_version(connection.get(), 2, 0);
    const auto pointerCookie = xcb_input_xi_get_client_pointer(connection.get(), XCB_WINDOW_NONE);
    const auto devicesCookie = xcb_input_xi_query_device(connection.get(), XCB_INPUT_DEVICE_ALL);
    connection.reply(xcb_input_xi_query_version_reply, version);
    const auto pointer = connection.reply(xcb_input_xi_get_client_pointer_reply, pointerCookie);
    auto devices = connection.reply(xcb_input_xi_query_device_reply, devicesCookie);
    if (!pointer || !devices) return {};
    DevicesInUse found{std::move(devices), pointer->deviceid, 0};
    eachDevice(*found.all, [&](const xcb_input_xi_device_info_t& device) {
        if (device.deviceid != found.masterPointer) return;
        found.masterKeyboard = static_cast<std::uint8_t>(device.attachment);
    });
    return found;
}

void sendKey(X11Connection& connection, std::uint8_t device, int type, std::uint8_t keyCode) {
    const std::uint8_t firstEvent =
        xcb_get_extension_data(connection.get(), &xcb_input_id)->first_event;
    xcb_test_fake_input(connection.get(), static_cast<std::uint8_t>(firstEvent + type), keyCode,
                        XCB_CURRENT_TIME, XCB_WINDOW_NONE, 0, 0, device);
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

std::optional<KeyboardsInUse> keyboardsInUse(X11Connection& connection) {
    const auto devices = devicesInUse(connection);
    if (!devices) return {};
    KeyboardsInUse found{devices->masterKeyboard, 0, {}};
    eachDevice(*devices->all, [&](const xcb_input_xi_device_info_t& device) {
        if (device.type != XCB_INPUT_DEVICE_TYPE_SLAVE_KEYBOARD) return;
        if (device.attachment != found.master) return;
        const auto id = static_cast<std::uint8_t>(device.deviceid);
        if (isSynthetic(device)) {
            found.synthetic = id;
        } else {
            found.real.push_back(id);
        }
    });
    return found.synthetic != 0 ? std::optional(std::move(found)) : std::nullopt;
}

std::vector<std::uint8_t> syntheticButtons(X11Connection& connection) {
    const auto devices = devicesInUse(connection);
    if (!devices) return {};
    std::uint8_t pointer = 0;
    eachDevice(*devices->all, [&](const xcb_input_xi_device_info_t& device) {
        if (device.type != XCB_INPUT_DEVICE_TYPE_SLAVE_POINTER) return;
        if (device.attachment != devices->masterPointer || !isSynthetic(device)) return;
        pointer = static_cast<std::uint8_t>(device.deviceid);
    });
    if (pointer == 0) return {};
    const auto cookie = xcb_input_get_device_button_mapping(connection.get(), pointer);
    const auto reply = connection.reply(xcb_input_get_device_button_mapping_reply, cookie);
    if (!reply) return {};
    const std::uint8_t* first = xcb_input_get_device_button_mapping_map(reply.get());
    return {first, first + xcb_input_get_device_button_mapping_map_length(reply.get())};
}

std::vector<HeldKeys> keysHeldByUser(X11Connection& connection) {
    const auto inUse = keyboardsInUse(connection);
    if (!inUse) return {};
    const std::vector<std::uint8_t>& keyboards = inUse->real;
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

void releaseUnusedKey(X11Connection& connection, std::uint8_t device) {
    sendKey(connection, device, XCB_INPUT_DEVICE_KEY_RELEASE,
            xcb_get_setup(connection.get())->min_keycode);
}

void pressHeldKey(X11Connection& connection, std::uint8_t device, std::uint8_t keyCode) {
    // The device itself has the key down and would not press it again.
    sendKey(connection, device, XCB_INPUT_DEVICE_KEY_RELEASE, keyCode);
    sendKey(connection, device, XCB_INPUT_DEVICE_KEY_PRESS, keyCode);
}

}  // namespace quil::linux_platform
