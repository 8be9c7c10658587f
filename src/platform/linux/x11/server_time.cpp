#include "platform/linux/x11/server_time.h"

namespace quil::linux_platform {

std::optional<xcb_timestamp_t> readServerTime(X11Connection& connection) {
    // The server only tells its time in events: here, that nothing was appended to a property.
    xcb_connection_t* const server = connection.get();
    const xcb_window_t window = xcb_generate_id(server);
    const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_create_window(server, XCB_COPY_FROM_PARENT, window, connection.root(), -1, -1, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK,
                      &events);
    xcb_change_property(server, XCB_PROP_MODE_APPEND, window, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, 8,
                        0, nullptr);
    xcb_destroy_window(server, window);
    connection.sync();
    std::optional<xcb_timestamp_t> time;
    while (const XcbPointer<xcb_generic_event_t> event{xcb_poll_for_event(server)}) {
        if ((event->response_type & 0x7f) != XCB_PROPERTY_NOTIFY) continue;
        const auto& change = *reinterpret_cast<const xcb_property_notify_event_t*>(event.get());
        if (change.window == window) time = change.time;
    }
    return time;
}

}  // namespace quil::linux_platform
