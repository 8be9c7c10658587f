#include "platform/linux/x11/input/key_receiver.h"

#include "platform/linux/x11/windows/window_stack.h"

namespace quil::linux_platform {

xcb_window_t keyboardWindow(X11Connection& connection) {
    const auto focus =
        connection.reply(xcb_get_input_focus_reply, xcb_get_input_focus(connection.get()));
    if (focus && focus->focus != XCB_INPUT_FOCUS_POINTER_ROOT &&
        focus->focus != connection.root()) {
        return focus->focus;
    }
    // Keys go to where the pointer is.
    const auto window = activeWindow(connection);
    return window ? window->id : xcb_window_t{XCB_WINDOW_NONE};
}

KeyReceiver::KeyReceiver(X11Connection& connection)
    : program_(connection, keyboardWindow(connection)) {
    if (program_.pid()) inputMethod_ = Gtk4Ibus::find(*program_.pid());
}

bool KeyReceiver::waitForMarks(std::uint32_t open, std::chrono::milliseconds timeout) {
    if (!program_.waitForMarks(open, timeout)) return false;
    if (open == 0 && inputMethod_) inputMethod_->waitForRest();
    return true;
}

}  // namespace quil::linux_platform
