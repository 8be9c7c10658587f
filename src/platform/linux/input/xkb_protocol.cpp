#include "platform/linux/input/xkb_protocol.h"

#include <sys/uio.h>
#include <xcb/xcbext.h>

namespace quil::linux_platform {
namespace {

/// Written by hand, because the library's version cannot latch modifiers.
void latchAndLock(X11Connection& connection, xcb_xkb_latch_lock_state_request_t request,
                  std::uint8_t latches) {
    request.deviceSpec = kCoreKeyboard;
    request.pad0 = latches;
    xcb_protocol_request_t protocol{};
    protocol.count = 1;
    protocol.ext = &xcb_xkb_id;
    protocol.opcode = XCB_XKB_LATCH_LOCK_STATE;
    protocol.isvoid = 1;
    iovec parts[3] = {};  // the library uses the two before those that are sent
    parts[2] = {&request, sizeof request};
    xcb_send_request(connection.get(), 0, parts + 2, &protocol);
}

}  // namespace

bool enableXkb(X11Connection& connection) {
    if (!connection.hasExtension(xcb_xkb_id)) return false;
    const auto answer = connection.reply(xcb_xkb_use_extension_reply,
                                         xcb_xkb_use_extension(connection.get(), 1, 0));
    return answer && answer->supported;
}

void lockModifiers(X11Connection& connection, std::uint8_t affected, std::uint8_t locks) {
    xcb_xkb_latch_lock_state_request_t request{};
    request.affectModLocks = affected;
    request.modLocks = locks;
    latchAndLock(connection, request, 0);
}

void latchModifiers(X11Connection& connection, std::uint8_t latches) {
    xcb_xkb_latch_lock_state_request_t request{};
    request.affectModLatches = 0xFF;
    latchAndLock(connection, request, latches);
}

}  // namespace quil::linux_platform
