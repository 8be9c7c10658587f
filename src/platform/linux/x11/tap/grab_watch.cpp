#include "platform/linux/x11/tap/grab_watch.h"

#include <xcb/xinput.h>

#include <utility>

#include "platform/linux/x11/windows/pop_ups.h"
#include "platform/linux/x11/windows/window_stack.h"

namespace quil::linux_platform {

GrabWatch::GrabWatch(std::shared_ptr<X11Connection> connection)
    : connection_(std::move(connection)), window_(xcb_generate_id(connection_->get())) {
    xcb_create_window(connection_->get(), XCB_COPY_FROM_PARENT, window_, connection_->root(), 0, 0,
                      1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
    read(UnreadRequest{});
}

void GrabWatch::read(const GrabRequest& request) {
    KeyboardGrabs::Grab grab{.client = request.client,
                             .protocol = KeyboardGrabs::Protocol::core,
                             .device = KeyboardGrabs::kCoreKeyboard,
                             .time = request.time};
    if (request.device) {
        const DeviceKind kind = kindOf(*request.device);
        if (kind == DeviceKind::pointer) {
            if (request.isGrab) grabs_.requestedOther(request.client);
            return;
        }
        grab.protocol = KeyboardGrabs::Protocol::xinput;
        if (kind == DeviceKind::otherKeyboard) grab.device = *request.device;
    }
    if (request.isGrab) {
        grabs_.requested(grab);
    } else {
        grabs_.released(grab);
    }
}

void GrabWatch::read(const GrabReply& reply) {
    grabs_.replied(reply.client, reply.coreStatus, reply.xinputStatus, reply.time);
}

void GrabWatch::read(const UnreadRequest&) {
    if (isGrabbedByAnother() && !showsMenu()) grabs_.foundGrabbed();
}

void GrabWatch::caughtUp() {
    if (grabs_.isUnsure() && !isGrabbedByAnother()) grabs_.foundFree(TapTime::clock::now());
}

/// A device that the server does not tell of, such as one that has just gone, may be a keyboard.
GrabWatch::DeviceKind GrabWatch::kindOf(std::uint16_t device) {
    xcb_connection_t* const server = connection_->get();
    const auto reply = connection_->reply(xcb_input_xi_query_device_reply,
                                          xcb_input_xi_query_device(server, device));
    if (!reply) return DeviceKind::otherKeyboard;
    const auto first = xcb_input_xi_query_device_infos_iterator(reply.get());
    if (first.rem == 0) return DeviceKind::otherKeyboard;
    switch (first.data->type) {
        case XCB_INPUT_DEVICE_TYPE_MASTER_POINTER:
        case XCB_INPUT_DEVICE_TYPE_SLAVE_POINTER:
            return DeviceKind::pointer;
        case XCB_INPUT_DEVICE_TYPE_MASTER_KEYBOARD:
            return DeviceKind::masterKeyboard;
        default:
            return DeviceKind::otherKeyboard;
    }
}

/// Whether the active program shows a menu: it has grabbed the keyboard for that, and what locks a
/// screen lies above menus.
bool GrabWatch::showsMenu() {
    const auto menu = topmostMenu(*connection_);
    const auto active = menu ? activeWindow(*connection_) : std::nullopt;
    const std::uint32_t mask = xcb_get_setup(connection_->get())->resource_id_mask;
    return active && (*menu & ~mask) == (active->id & ~mask);
}

/// The server looks whether another client has the keyboard before it looks whether the window is
/// shown, which a grab needs.
bool GrabWatch::isGrabbedByAnother() {
    xcb_connection_t* const server = connection_->get();
    const auto reply = connection_->reply(
        xcb_grab_keyboard_reply, xcb_grab_keyboard(server, 1, window_, XCB_CURRENT_TIME,
                                                   XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC));
    return reply && reply->status == XCB_GRAB_STATUS_ALREADY_GRABBED;
}

}  // namespace quil::linux_platform
