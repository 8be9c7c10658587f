#include "platform/linux/x11/input/keyboard_source.h"

#include <utility>

#include "platform/linux/x11/input/focused_client.h"
#include "platform/linux/x11/input/text_typist.h"
#include "platform/linux/x11/keyboard/key_codes.h"

namespace quil::linux_platform {

KeyboardSource::KeyboardSource(std::shared_ptr<X11Connection> connection)
    : connection_(std::move(connection)) {}

KeyboardSource::~KeyboardSource() {
    deliverText();
    latinShortcutKey_.reset();
    // A click or a look that comes next is not to come before them.
    if (keysWindow_ != XCB_WINDOW_NONE) {
        FocusedClient(*connection_, keysWindow_).waitForDelayedKeys();
    }
}

KeyboardSession& KeyboardSource::session() {
    if (!session_) session_.emplace(connection_);
    return *session_;
}

void KeyboardSource::post(const PostedEvent& event) {
    const bool isDown = event.type == kEventKeyDown;
    if (event.text) {
        // Key down types, key up carries the same text once more.
        if (isDown) text_ += *event.text;
        return;
    }
    deliverText();
    const auto keyCode = xKeyCode(event.keyCode);
    const xcb_setup_t& setup = *xcb_get_setup(connection_->get());
    if (!keyCode || *keyCode < setup.min_keycode || *keyCode > setup.max_keycode) return;
    if (keysWindow_ == XCB_WINDOW_NONE) keysWindow_ = keyboardWindow(*connection_);
    session().key(keyToSend(*keyCode, isDown, event.flags), isDown, event.flags);
    xcb_flush(connection_->get());
    if (!isDown) latinShortcutKey_.reset();
}

/// The command flag names a command by its letter, wherever the layout has that; Control and Alt
/// are pressed with the key as it is, unless no layout of the keyboard has a Latin keysym on it.
std::uint8_t KeyboardSource::keyToSend(std::uint8_t keyCode, bool isDown, std::uint64_t flags) {
    constexpr std::uint64_t kShortcutFlags =
        kEventFlagMaskCommand | kEventFlagMaskControl | kEventFlagMaskAlternate;
    if ((flags & kShortcutFlags) == 0 || !session().knowsKeys()) return keyCode;
    const KeyboardMap& map = session().map();
    const bool isCommand = (flags & kEventFlagMaskCommand) != 0;
    const auto key = isCommand ? keyOfShortcut(map, session().group(), keyCode) : std::nullopt;
    if (key) return *key;
    if (isDown) {
        if (const auto keysyms = missingLatinKeysyms(map, keyCode)) {
            latinShortcutKey_.emplace(session(), *keysyms);
        }
    }
    return latinShortcutKey_ ? latinShortcutKey_->keyCode().value_or(keyCode) : keyCode;
}

void KeyboardSource::deliverText() {
    if (text_.empty()) return;
    typeText(session(), text_);
    text_.clear();
}

}  // namespace quil::linux_platform
