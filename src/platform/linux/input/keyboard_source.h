#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/event_posting.h"
#include "platform/linux/input/keyboard_session.h"
#include "platform/linux/input/posted_event.h"
#include "platform/linux/x11/connection.h"

namespace quil::linux_platform {

/// What is to be remembered of a connection's keyboard from one operation to the next.
struct KeyboardMemory {
    std::weak_ptr<X11Connection> connection;
    KeySet pressedForPerson;
};

/// Delivers the key events of one operation. Texts are collected, so that they can be typed
/// together; keys are sent at once.
class KeyboardSource : public EventSource {
  public:
    KeyboardSource(std::shared_ptr<X11Connection> connection, KeyboardMemory& memory);
    ~KeyboardSource() override;

    void post(const PostedEvent& event);

  private:
    KeyboardSession& session();
    void deliverText();

    std::shared_ptr<X11Connection> connection_;
    KeyboardMemory& memory_;
    /// Begins with the first key.
    std::optional<KeyboardSession> session_;
    std::u16string text_;
};

}  // namespace quil::linux_platform
