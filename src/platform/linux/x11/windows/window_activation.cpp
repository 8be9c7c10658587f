#include "platform/linux/x11/windows/window_activation.h"

#include "platform/linux/x11/windows/window_manager.h"

namespace quil::linux_platform {
namespace {

/// The source indication of pagers and the like, whose requests express the wish of the user
/// (Extended Window Manager Hints, "Source indication in requests").
constexpr std::uint32_t kPager = 2;

void askWindowManager(X11Connection& connection, xcb_window_t window) {
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window;
    message.type = connection.atom("_NET_ACTIVE_WINDOW");
    message.data.data32[0] = kPager;
    message.data.data32[1] = XCB_CURRENT_TIME;
    xcb_send_event(connection.get(), 0, connection.root(),
                   XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   reinterpret_cast<const char*>(&message));
}

}  // namespace

void bringToFront(X11Connection& connection, xcb_window_t window) {
    if (readWindowManager(connection)) {
        askWindowManager(connection, window);
    } else {
        const std::uint32_t above = XCB_STACK_MODE_ABOVE;
        xcb_map_window(connection.get(), window);
        xcb_configure_window(connection.get(), window, XCB_CONFIG_WINDOW_STACK_MODE, &above);
        xcb_set_input_focus(connection.get(), XCB_INPUT_FOCUS_PARENT, window, XCB_CURRENT_TIME);
    }
    connection.sync();
    connection.discardEvents();
}

}  // namespace quil::linux_platform
