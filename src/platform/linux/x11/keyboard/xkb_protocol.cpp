#include "platform/linux/x11/keyboard/xkb_protocol.h"

#include <sys/uio.h>
#include <xcb/xcbext.h>

namespace quil::linux_platform {
namespace {

/// Requests that the library cannot make: it does not know how modifiers are latched, and has no
/// use for a map that is ready to be sent. `parts` begins with two elements for the library's own
/// use.
template <typename Request, std::size_t count>
xcb_void_cookie_t send(X11Connection& connection, std::uint8_t opcode, Request& request,
                       iovec (&parts)[count]) {
    parts[2] = {&request, sizeof request};
    xcb_protocol_request_t protocol{};
    protocol.count = count - 2;
    protocol.ext = &xcb_xkb_id;
    protocol.opcode = opcode;
    protocol.isvoid = 1;
    return {xcb_send_request(connection.get(), XCB_REQUEST_CHECKED, parts + 2, &protocol)};
}

void latchAndLock(X11Connection& connection, xcb_xkb_latch_lock_state_request_t request,
                  std::uint8_t latches) {
    request.deviceSpec = kCoreKeyboard;
    request.pad0 = latches;
    iovec parts[3] = {};
    const auto cookie = send(connection, XCB_XKB_LATCH_LOCK_STATE, request, parts);
    xcb_discard_reply(connection.get(), cookie.sequence);
}

}  // namespace

bool enableXkb(X11Connection& connection) {
    if (!connection.hasExtension(xcb_xkb_id)) return false;
    const auto reply = connection.reply(xcb_xkb_use_extension_reply,
                                        xcb_xkb_use_extension(connection.get(), 1, 0));
    return reply && reply->supported;
}

void lockModifiers(X11Connection& connection, std::uint8_t affected, std::uint8_t locks) {
    xcb_xkb_latch_lock_state_request_t request{};
    request.affectModLocks = affected;
    request.modLocks = locks;
    latchAndLock(connection, request, 0);
}

void latchForNextKey(X11Connection& connection, std::uint8_t latches, std::int16_t groups) {
    xcb_xkb_latch_lock_state_request_t request{};
    request.affectModLatches = 0xFF;
    request.latchGroup = 1;
    request.groupLatch = static_cast<std::uint16_t>(groups);
    latchAndLock(connection, request, latches);
}

void enableControls(X11Connection& connection, std::uint16_t device, std::uint32_t controls,
                    bool areOn) {
    xcb_xkb_set_controls_request_t request{};
    request.deviceSpec = device;
    request.affectEnabledControls = controls;
    request.enabledControls = areOn ? controls : 0;
    iovec parts[3] = {};
    const auto cookie = send(connection, XCB_XKB_SET_CONTROLS, request, parts);
    xcb_discard_reply(connection.get(), cookie.sequence);
}

bool setKeyboardMap(X11Connection& connection, xcb_xkb_set_map_request_t request,
                    const std::vector<std::uint8_t>& values) {
    iovec parts[4] = {};
    parts[3] = {const_cast<std::uint8_t*>(values.data()), values.size()};
    return connection.succeeded(send(connection, XCB_XKB_SET_MAP, request, parts));
}

}  // namespace quil::linux_platform
