#include "platform/linux/x11/input/crash_recovery.h"

#include <xcb/xtest.h>

#include <string_view>
#include <vector>

#include "platform/linux/x11/input/input_devices.h"
#include "platform/linux/x11/input/keyboard_lock.h"
#include "platform/linux/x11/input/spare_key_mapping.h"
#include "platform/linux/x11/input/synthetic_keyboard.h"
#include "platform/linux/x11/keyboard/xkb_protocol.h"
#include "platform/linux/x11/properties.h"

namespace quil::linux_platform {
namespace {

/// The runtime's window and the button.
constexpr std::string_view kButtonProperty = "_QUIL_POINTER_BUTTON";
/// The runtime's window and the modifier keys that it holds around pointer events.
constexpr std::string_view kModifiersProperty = "_QUIL_POINTER_MODIFIERS";
/// The modifiers that the user has locked.
constexpr std::string_view kLocksProperty = "_QUIL_KEYBOARD_LOCKS";

void release(X11Connection& connection, std::uint8_t type, std::uint8_t detail) {
    xcb_test_fake_input(connection.get(), type, detail, XCB_CURRENT_TIME, XCB_WINDOW_NONE, 0, 0, 0);
}

/// What a runtime has noted there that is there no more: its window is the first number.
std::vector<std::uint32_t> leftIn(X11Connection& connection, std::string_view property) {
    auto numbers = readProperty(connection, connection.root(), property).numbers();
    if (numbers.size() < 2 || connection.hasWindow(numbers[0])) return {};
    return numbers;
}

}  // namespace

void notePressedButton(X11Connection& connection, xcb_window_t runtime, std::uint8_t button) {
    writeRootNumbers(connection, kButtonProperty, {runtime, button});
}

void noteReleasedButton(X11Connection& connection) {
    xcb_delete_property(connection.get(), connection.root(), connection.atom(kButtonProperty));
}

void noteHeldModifier(X11Connection& connection, xcb_window_t runtime, std::uint8_t keyCode,
                      bool isDown) {
    auto held = readProperty(connection, connection.root(), kModifiersProperty).numbers();
    if (held.empty() || held[0] != runtime) held = {runtime};
    std::erase(held, keyCode);
    if (isDown) held.push_back(keyCode);
    if (held.size() > 1) {
        writeRootNumbers(connection, kModifiersProperty, held);
    } else {
        xcb_delete_property(connection.get(), connection.root(),
                            connection.atom(kModifiersProperty));
    }
}

void releasePointerOfCrashedRuntime(X11Connection& connection) {
    const auto button = leftIn(connection, kButtonProperty);
    if (!button.empty()) {
        release(connection, XCB_BUTTON_RELEASE, static_cast<std::uint8_t>(button[1]));
        noteReleasedButton(connection);
    }
    const auto modifiers = leftIn(connection, kModifiersProperty);
    if (modifiers.empty()) return;
    for (auto key = modifiers.begin() + 1; key != modifiers.end(); ++key) {
        release(connection, XCB_KEY_RELEASE, static_cast<std::uint8_t>(*key));
    }
    xcb_delete_property(connection.get(), connection.root(), connection.atom(kModifiersProperty));
}

void noteLocks(X11Connection& connection, std::uint8_t locks) {
    writeRootNumbers(connection, kLocksProperty, {locks});
}

void noteKeyboardRestored(X11Connection& connection) {
    xcb_delete_property(connection.get(), connection.root(), connection.atom(kLocksProperty));
}

void releaseKeysOfCrashedRuntime(X11Connection& connection) {
    restoreFiltersOfCrashedRuntime(connection);
    const auto locks = readProperty(connection, connection.root(), kLocksProperty).number();
    if (!locks) return;
    KeySet left = keysDown(connection);
    for (const HeldKeys& held : keysHeldByUser(connection)) left &= ~held.keys;
    for (std::size_t code = 0; code < left.size(); ++code) {
        if (left[code]) release(connection, XCB_KEY_RELEASE, static_cast<std::uint8_t>(code));
    }
    lockModifiers(connection, 0xFF, static_cast<std::uint8_t>(*locks));
    noteKeyboardRestored(connection);
}

bool recoverFromCrashedRuntime(X11Connection& connection) {
    releasePointerOfCrashedRuntime(connection);
    if (KeyboardLock::isHeld(connection) || !enableXkb(connection)) return false;
    const bool wasPostingKeys =
        readProperty(connection, connection.root(), kLocksProperty).exists();
    if (wasPostingKeys) {
        const KeyboardLock lock(connection);
        releaseKeysOfCrashedRuntime(connection);
    }
    clearSpareKeys(connection);
    connection.sync();
    return wasPostingKeys;
}

}  // namespace quil::linux_platform
