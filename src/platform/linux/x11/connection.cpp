#include "platform/linux/x11/connection.h"

namespace quil::linux_platform {
namespace {

const xcb_screen_t* screenOf(xcb_connection_t* connection, int number) {
    auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
    for (; screens.rem > 0 && number > 0; --number) xcb_screen_next(&screens);
    return screens.rem > 0 ? screens.data : nullptr;
}

}  // namespace

std::shared_ptr<X11Connection> X11Connection::open() {
    int number = 0;
    xcb_connection_t* connection = xcb_connect(nullptr, &number);
    const xcb_screen_t* screen =
        xcb_connection_has_error(connection) == 0 ? screenOf(connection, number) : nullptr;
    if (!screen) {
        xcb_disconnect(connection);
        return nullptr;
    }
    return std::shared_ptr<X11Connection>(new X11Connection(connection, screen));
}

X11Connection::~X11Connection() {
    xcb_disconnect(connection_);
}

xcb_atom_t X11Connection::atom(std::string_view name) {
    const std::lock_guard guard(atomsLock_);
    if (const auto known = atoms_.find(name); known != atoms_.end()) return known->second;
    const auto answer = reply(
        xcb_intern_atom_reply,
        xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(name.size()), name.data()));
    if (!answer) return XCB_ATOM_NONE;
    atoms_.emplace(name, answer->atom);
    return answer->atom;
}

std::string X11Connection::atomName(xcb_atom_t atom) {
    const auto answer = reply(xcb_get_atom_name_reply, xcb_get_atom_name(connection_, atom));
    if (!answer) return {};
    return {xcb_get_atom_name_name(answer.get()),
            static_cast<std::size_t>(xcb_get_atom_name_name_length(answer.get()))};
}

bool X11Connection::hasExtension(xcb_extension_t& extension) const {
    const xcb_query_extension_reply_t* data = xcb_get_extension_data(connection_, &extension);
    return data && data->present;
}

void X11Connection::discardEvents() {
    while (XcbPointer<xcb_generic_event_t>(xcb_poll_for_event(connection_))) {
    }
}

std::shared_ptr<X11Connection> X11Display::connection() {
    if (connection_ && connection_->isAlive()) {
        connection_->discardEvents();
        if (connection_->isAlive()) return connection_;
    }
    connection_ = X11Connection::open();
    return connection_;
}

}  // namespace quil::linux_platform
