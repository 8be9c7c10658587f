#include "platform/linux/x11/input/window_manager_queue.h"

#include <poll.h>

namespace quil::linux_platform {

using std::chrono::milliseconds;

void WindowManagerQueue::makeWindow(X11Connection& connection) {
    window_ = xcb_generate_id(connection.get());
    const std::uint32_t events = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_create_window(connection.get(), 0, window_, connection.root(), 0, 0, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK,
                      &events);
    x_ = 0;
}

bool WindowManagerQueue::waitUntilDone(const std::shared_ptr<X11Connection>& connection,
                                       milliseconds timeout) {
    if (connection_.lock() != connection) {
        makeWindow(*connection);
        connection_ = connection;
    }
    // Each position is asked for once in a long time: the reply to an earlier wait may come late.
    x_ = static_cast<std::int16_t>(x_ % 10'000 + 1);
    const std::uint32_t x = static_cast<std::uint32_t>(x_);
    xcb_configure_window(connection->get(), window_, XCB_CONFIG_WINDOW_X, &x);
    xcb_flush(connection->get());
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    while (connection->isAlive()) {
        while (const XcbPointer<xcb_generic_event_t> event{xcb_poll_for_event(connection->get())}) {
            const auto& moved = reinterpret_cast<const xcb_configure_notify_event_t&>(*event);
            if ((event->response_type & 0x7F) == XCB_CONFIGURE_NOTIFY && moved.window == window_ &&
                moved.x == x_) {
                return true;
            }
        }
        const auto left =
            std::chrono::ceil<milliseconds>(deadline - std::chrono::steady_clock::now());
        if (left <= milliseconds::zero()) return false;
        pollfd socket{xcb_get_file_descriptor(connection->get()), POLLIN, 0};
        poll(&socket, 1, static_cast<int>(left.count()));
    }
    return false;
}

}  // namespace quil::linux_platform
