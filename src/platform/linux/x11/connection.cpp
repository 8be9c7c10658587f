#include "platform/linux/x11/connection.h"

#include <poll.h>
#include <xcb/composite.h>
#include <xcb/damage.h>
#include <xcb/randr.h>
#include <xcb/record.h>
#include <xcb/res.h>
#include <xcb/shape.h>
#include <xcb/shm.h>
#include <xcb/xcbext.h>
#include <xcb/xfixes.h>
#include <xcb/xinput.h>
#include <xcb/xtest.h>

#include <algorithm>
#include <chrono>
#include <system_error>
#include <thread>

#include "platform/linux/x11/display_probe.h"

// Of <xcb/xkb.h>, which is not C++: it has a field called "explicit".
extern "C" xcb_extension_t xcb_xkb_id;

namespace quil::linux_platform {
namespace {

using std::chrono::milliseconds;
constexpr milliseconds kServerTimeout{2000};
/// Another thread may read our reply from the socket, which a wait on it does not notice.
constexpr milliseconds kLongestPoll{20};

const xcb_screen_t* screenOf(xcb_connection_t* connection, int number) {
    auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
    for (; screens.rem > 0 && number > 0; --number) xcb_screen_next(&screens);
    return screens.rem > 0 ? screens.data : nullptr;
}

/// The library asks for an extension when it is first used and would then wait without a limit.
void askForExtensions(xcb_connection_t* connection) {
    xcb_extension_t* const extensions[] = {&xcb_composite_id, &xcb_damage_id, &xcb_input_id,
                                           &xcb_randr_id,     &xcb_record_id, &xcb_res_id,
                                           &xcb_shape_id,     &xcb_shm_id,    &xcb_test_id,
                                           &xcb_xfixes_id,    &xcb_xkb_id};
    for (auto* extension : extensions) xcb_prefetch_extension_data(connection, extension);
    for (auto* extension : extensions) xcb_get_extension_data(connection, extension);
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
    askForExtensions(connection);
    return std::shared_ptr<X11Connection>(new X11Connection(connection, screen));
}

X11Connection::~X11Connection() {
    xcb_disconnect(connection_);
}

void* X11Connection::waitForReply(unsigned sequence) {
    const auto deadline = std::chrono::steady_clock::now() + kServerTimeout;
    xcb_flush(connection_);
    while (isAlive()) {
        void* reply = nullptr;
        xcb_generic_error_t* error = nullptr;
        if (xcb_poll_for_reply(connection_, sequence, &reply, &error)) {
            std::free(error);
            return reply;
        }
        const auto left =
            std::chrono::ceil<milliseconds>(deadline - std::chrono::steady_clock::now());
        if (left <= milliseconds::zero()) {
            hasTimedOut_ = true;
            break;
        }
        pollfd socket{xcb_get_file_descriptor(connection_), POLLIN, 0};
        poll(&socket, 1, static_cast<int>(std::min(left, kLongestPoll).count()));
    }
    xcb_discard_reply(connection_, sequence);
    return nullptr;
}

bool X11Connection::succeeded(xcb_void_cookie_t cookie) {
    // The reply to any later request says that this one has been processed.
    if (!reply(xcb_get_input_focus_reply, xcb_get_input_focus(connection_))) return false;
    return !XcbPointer<xcb_generic_error_t>(xcb_request_check(connection_, cookie));
}

xcb_atom_t X11Connection::atom(std::string_view name) {
    const std::lock_guard guard(atomsLock_);
    if (const auto known = atoms_.find(name); known != atoms_.end()) return known->second;
    const auto interned = reply(
        xcb_intern_atom_reply,
        xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(name.size()), name.data()));
    if (!interned) return XCB_ATOM_NONE;
    atoms_.emplace(name, interned->atom);
    return interned->atom;
}

bool X11Connection::hasExtension(xcb_extension_t& extension) const {
    const xcb_query_extension_reply_t* data = xcb_get_extension_data(connection_, &extension);
    return data && data->present;
}

void X11Connection::discardEvents() {
    while (XcbPointer<xcb_generic_event_t>(xcb_poll_for_event(connection_))) {
    }
}

/// Connecting has no limit of its own, so it happens on a thread that can be left waiting.
bool X11Display::beginAttempt() {
    std::packaged_task<std::shared_ptr<X11Connection>()> attempt(X11Connection::open);
    auto connection = attempt.get_future();
    try {
        std::thread(std::move(attempt)).detach();
    } catch (const std::system_error&) {
        return false;
    }
    attempt_ = std::move(connection);
    return true;
}

std::shared_ptr<X11Connection> X11Display::connection() {
    if (connection_) {
        // Reading what has arrived also notices a server that has gone.
        connection_->discardEvents();
        if (connection_->isAlive()) return connection_;
        serverHangs_ = connection_->hasTimedOut();
        connection_ = nullptr;
    }
    if (!attempt_.valid()) {
        if (!mayHaveDisplay() || !beginAttempt()) return nullptr;
    }
    const auto timeout = serverHangs_ ? milliseconds::zero() : kServerTimeout;
    serverHangs_ = attempt_.wait_for(timeout) != std::future_status::ready;
    if (!serverHangs_) connection_ = attempt_.get();
    return connection_;
}

}  // namespace quil::linux_platform
