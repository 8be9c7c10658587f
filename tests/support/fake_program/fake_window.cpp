#include "fake_window.h"

#include <unistd.h>

#include <cstdlib>
#include <cstring>

namespace fake_program {

FakeWindow::FakeWindow(const std::string& title, int width, int height)
    : connection_(xcb_connect(nullptr, nullptr)), window_(xcb_generate_id(connection_)) {
    const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data;
    root_ = screen->root;
    const std::uint32_t values[] = {screen->white_pixel, XCB_EVENT_MASK_STRUCTURE_NOTIFY};
    xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window_, root_, 0, 0,
                      static_cast<std::uint16_t>(width), static_cast<std::uint16_t>(height), 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, screen->root_visual,
                      XCB_CW_BACK_PIXEL | XCB_CW_EVENT_MASK, values);
    const auto pid = static_cast<std::uint32_t>(getpid());
    const auto length = static_cast<std::uint32_t>(title.size());
    set("_NET_WM_PID", "CARDINAL", 32, 1, &pid);
    set("WM_NAME", "STRING", 8, length, title.data());
    set("_NET_WM_NAME", "UTF8_STRING", 8, length, title.data());
    set("WM_CLASS", "STRING", 8, 10, "fake\0Fake");
    xcb_map_window(connection_, window_);
    xcb_flush(connection_);
}

void FakeWindow::set(const char* property, const char* type, std::uint8_t format,
                     std::uint32_t length, const void* data) {
    const auto atom = [&](const char* name) {
        const auto size = static_cast<std::uint16_t>(std::strlen(name));
        auto* reply = xcb_intern_atom_reply(connection_,
                                            xcb_intern_atom(connection_, 0, size, name), nullptr);
        const xcb_atom_t result = reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
        std::free(reply);
        return result;
    };
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window_, atom(property), atom(type),
                        format, length, data);
}

void FakeWindow::update() {
    while (auto* event = xcb_poll_for_event(connection_)) std::free(event);
    auto* place = xcb_translate_coordinates_reply(
        connection_, xcb_translate_coordinates(connection_, window_, root_, 0, 0), nullptr);
    if (place) {
        x_ = place->dst_x;
        y_ = place->dst_y;
    }
    std::free(place);
}

}  // namespace fake_program
