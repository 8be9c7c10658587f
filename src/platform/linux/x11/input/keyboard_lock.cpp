#include "platform/linux/x11/input/keyboard_lock.h"

#include <string_view>
#include <thread>
#include <utility>

namespace quil::linux_platform {
namespace {

/// Longer than a program is waited for that processes a part of a text.
constexpr std::chrono::seconds kOwnerTimeout{7};
constexpr std::chrono::seconds kRenewInterval{1};
constexpr std::chrono::milliseconds kLockPollInterval{10};
constexpr std::string_view kSelection = "_QUIL_KEYBOARD_TURN";

xcb_window_t ownerOf(X11Connection& connection, xcb_atom_t selection) {
    const auto reply = connection.reply(xcb_get_selection_owner_reply,
                                        xcb_get_selection_owner(connection.get(), selection));
    return reply ? reply->owner : xcb_window_t{XCB_WINDOW_NONE};
}

}  // namespace

KeyboardLock::KeyboardLock(X11Connection& connection)
    : connection_(connection), selection_(connection.atom(kSelection)) {
    xcb_window_t other = owner();
    auto deadline = Clock::now() + kOwnerTimeout;
    while (connection_.isAlive()) {
        const bool isFree = other == XCB_WINDOW_NONE || Clock::now() >= deadline;
        if (isFree && acquireIf(other)) return;
        std::this_thread::sleep_for(kLockPollInterval);
        const xcb_window_t before = std::exchange(other, owner());
        if (other != before) deadline = Clock::now() + kOwnerTimeout;
    }
}

KeyboardLock::~KeyboardLock() {
    if (window_ == XCB_WINDOW_NONE) return;
    xcb_destroy_window(connection_.get(), window_);  // ends the ownership, too
    xcb_flush(connection_.get());
}

bool KeyboardLock::isHeld(X11Connection& connection) {
    return ownerOf(connection, connection.atom(kSelection)) != XCB_WINDOW_NONE;
}

bool KeyboardLock::renew() {
    if (Clock::now() < nextRenewal_) return true;
    return window_ != XCB_WINDOW_NONE && acquireIf(window_);
}

xcb_window_t KeyboardLock::owner() const {
    return ownerOf(connection_, selection_);
}

/// Whether that one was the owner still.
bool KeyboardLock::acquireIf(xcb_window_t expected) {
    xcb_grab_server(connection_.get());
    const bool isExpected = owner() == expected;
    if (isExpected) acquire();
    xcb_ungrab_server(connection_.get());
    xcb_flush(connection_.get());
    return isExpected;
}

void KeyboardLock::acquire() {
    const xcb_window_t former = std::exchange(window_, xcb_generate_id(connection_.get()));
    xcb_create_window(connection_.get(), 0, window_, connection_.root(), 0, 0, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
    xcb_set_selection_owner(connection_.get(), window_, selection_, XCB_CURRENT_TIME);
    if (former != XCB_WINDOW_NONE) xcb_destroy_window(connection_.get(), former);
    nextRenewal_ = Clock::now() + kRenewInterval;
}

}  // namespace quil::linux_platform
