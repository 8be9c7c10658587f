#include "platform/linux/input/keyboard_source.h"

#include <utility>

#include "platform/linux/input/spare_key_mapping.h"
#include "platform/linux/input/text_typist.h"
#include "platform/linux/input/xkb_protocol.h"
#include "platform/linux/key_codes.h"

namespace quil::linux_platform {

KeyboardSource::KeyboardSource(std::shared_ptr<X11Connection> connection, KeyboardMemory& memory)
    : connection_(std::move(connection)), memory_(memory) {
    if (memory_.connection.lock() == connection_) return;
    memory_ = {.connection = connection_, .pressedForPerson = {}};
    if (enableXkb(*connection_)) clearSpareKeys(*connection_);
}

KeyboardSource::~KeyboardSource() {
    deliverText();
}

KeyboardSession& KeyboardSource::session() {
    if (!session_) session_.emplace(connection_, memory_.pressedForPerson);
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
    session().key(*keyCode, isDown, event.flags);
    xcb_flush(connection_->get());
}

void KeyboardSource::deliverText() {
    if (text_.empty()) return;
    typeText(session(), text_);
    text_.clear();
}

}  // namespace quil::linux_platform
