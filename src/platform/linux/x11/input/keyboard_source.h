#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/event_posting.h"
#include "platform/linux/x11/connection.h"
#include "platform/linux/x11/input/keyboard_session.h"
#include "platform/linux/x11/input/latin_shortcut_key.h"
#include "platform/linux/x11/input/posted_event.h"

namespace quil::linux_platform {

/// Delivers the key events of one operation. Texts are collected, so that they can be typed
/// together; keys are sent at once.
class KeyboardSource : public EventSource {
  public:
    explicit KeyboardSource(std::shared_ptr<X11Connection> connection);
    ~KeyboardSource() override;

    /// Takes a key event: sends its key, or keeps its text until a key or the end comes.
    void post(const PostedEvent& event);

  private:
    KeyboardSession& session();
    void deliverText();
    std::uint8_t keyToSend(std::uint8_t keyCode, bool isDown, std::uint64_t flags);

    std::shared_ptr<X11Connection> connection_;
    /// Begins with the first key.
    std::optional<KeyboardSession> session_;
    std::optional<LatinShortcutKey> latinShortcutKey_;
    std::u16string text_;
    /// The window that had the focus when the first key was sent; none when none was.
    xcb_window_t keysWindow_ = XCB_WINDOW_NONE;
};

}  // namespace quil::linux_platform
