#include "platform/linux/x11/input/key_receiver.h"

#include <poll.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <thread>

#include "platform/linux/applications/processes.h"
#include "platform/linux/x11/properties.h"
#include "platform/linux/x11/windows/window_owners.h"
#include "platform/linux/x11/windows/window_stack.h"

namespace quil::linux_platform {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr int kMostAncestors = 32;
constexpr milliseconds kLookInterval{4};
/// A process that has slept through this many looks is at rest.
constexpr int kLooksAtRest = 5;
/// Keys may close the window that they go to; then nobody answers.
constexpr milliseconds kWindowLookInterval{100};
/// For a program whose process cannot be looked at.
constexpr milliseconds kBlindWait{300};

xcb_window_t focusedWindow(X11Connection& connection) {
    const auto focus =
        connection.reply(xcb_get_input_focus_reply, xcb_get_input_focus(connection.get()));
    if (focus && focus->focus != XCB_INPUT_FOCUS_POINTER_ROOT &&
        focus->focus != connection.root()) {
        return focus->focus;
    }
    // Keys go to where the pointer is.
    const auto window = activeWindow(connection);
    return window ? window->id : xcb_window_t{XCB_WINDOW_NONE};
}

bool answersPings(X11Connection& connection, xcb_window_t window) {
    return readProperty(connection, window, "WM_PROTOCOLS")
        .contains(connection.atom("_NET_WM_PING"));
}

xcb_window_t parentOf(X11Connection& connection, xcb_window_t window) {
    const auto tree =
        connection.reply(xcb_query_tree_reply, xcb_query_tree(connection.get(), window));
    return tree ? tree->parent : xcb_window_t{XCB_WINDOW_NONE};
}

bool isThere(X11Connection& connection, xcb_window_t window) {
    return connection.reply(xcb_get_window_attributes_reply,
                            xcb_get_window_attributes(connection.get(), window)) != nullptr;
}

std::optional<std::int32_t> processOf(X11Connection& connection, xcb_window_t window) {
    WindowOwners owners(connection, {window});
    return owners.read(0, readProperty(connection, window, "_NET_WM_PID"),
                       readProperty(connection, window, "WM_CLIENT_MACHINE"));
}

/// Later than all marks of earlier receivers, whose answers may still come.
std::uint32_t firstMark() {
    using Tick = std::chrono::duration<std::int64_t, std::ratio<1, 10'000>>;
    return static_cast<std::uint32_t>(
        std::chrono::floor<Tick>(Clock::now().time_since_epoch()).count());
}

void selectRootEvents(X11Connection& connection, std::uint32_t mask) {
    xcb_change_window_attributes(connection.get(), connection.root(), XCB_CW_EVENT_MASK, &mask);
}

}  // namespace

KeyReceiver::KeyReceiver(X11Connection& connection)
    : connection_(connection), window_(focusedWindow(connection)), marks_(firstMark()) {
    passed_ = marks_;
    if (window_ != XCB_WINDOW_NONE) pid_ = processOf(connection, window_);
    if (pid_) inputMethod_ = Gtk4Ibus::find(*pid_);
    // Toolkits often give the focus to a window inside of the one that everybody knows.
    xcb_window_t window = window_;
    for (int i = 0; i < kMostAncestors && window != XCB_WINDOW_NONE && window != connection.root();
         ++i, window = parentOf(connection, window)) {
        if (!answersPings(connection, window)) continue;
        window_ = window;
        answersPings_ = true;
        // The answers are sent to the root window, to those who care about the windows on it (GTK)
        // or about itself (Qt).
        selectRootEvents(connection_,
                         XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_STRUCTURE_NOTIFY);
        return;
    }
}

KeyReceiver::~KeyReceiver() {
    if (answersPings_) selectRootEvents(connection_, XCB_EVENT_MASK_NO_EVENT);
}

void KeyReceiver::mark() {
    ++marks_;
    if (!answersPings_) return;
    xcb_client_message_event_t ping{};
    ping.response_type = XCB_CLIENT_MESSAGE;
    ping.format = 32;
    ping.window = window_;
    ping.type = connection_.atom("WM_PROTOCOLS");
    ping.data.data32[0] = connection_.atom("_NET_WM_PING");
    // Stands for a time.
    ping.data.data32[1] = marks_;
    ping.data.data32[2] = window_;
    xcb_send_event(connection_.get(), 0, window_, XCB_EVENT_MASK_NO_EVENT,
                   reinterpret_cast<const char*>(&ping));
    xcb_flush(connection_.get());
}

bool KeyReceiver::waitForMarks(std::uint32_t open, milliseconds patience) {
    if (window_ == XCB_WINDOW_NONE) passed_ = marks_;
    while (marks_ - passed_ > open) {
        const auto deadline = Clock::now() + patience;
        if (answersPings_) {
            if (!waitForMark(deadline)) return false;
        } else {
            if (!waitForRest(deadline)) return false;
            passed_ = marks_;
        }
    }
    if (open == 0 && inputMethod_) inputMethod_->waitForRest();
    return true;
}

bool KeyReceiver::waitForMark(Clock::time_point deadline) {
    const xcb_atom_t protocols = connection_.atom("WM_PROTOCOLS");
    auto nextLook = Clock::now() + kWindowLookInterval;
    while (connection_.isAlive()) {
        if (const XcbPointer<xcb_generic_event_t> event{xcb_poll_for_event(connection_.get())}) {
            const auto& message = reinterpret_cast<const xcb_client_message_event_t&>(*event);
            const bool isAnswer = (event->response_type & 0x7F) == XCB_CLIENT_MESSAGE &&
                                  message.type == protocols && message.data.data32[2] == window_ &&
                                  message.data.data32[1] - passed_ - 1 < marks_ - passed_;
            if (!isAnswer) continue;
            passed_ = message.data.data32[1];
            return true;
        }
        const auto left = std::chrono::ceil<milliseconds>(deadline - Clock::now());
        if (left <= milliseconds::zero()) return false;
        pollfd socket{xcb_get_file_descriptor(connection_.get()), POLLIN, 0};
        poll(&socket, 1, static_cast<int>(std::min(left, kWindowLookInterval).count()));
        if (Clock::now() < nextLook) continue;
        nextLook = Clock::now() + kWindowLookInterval;
        if (!isThere(connection_, window_)) {
            passed_ = marks_;
            return true;
        }
    }
    return false;
}

bool KeyReceiver::waitForRest(Clock::time_point deadline) const {
    connection_.sync();
    if (!pid_ || !timeRunAtRest(*pid_)) {
        const bool isVisible = pid_ && std::filesystem::exists("/proc/" + std::to_string(*pid_));
        if (!isVisible) {
            std::this_thread::sleep_until(std::min(deadline, Clock::now() + kBlindWait));
            return true;
        }
    }
    std::optional<std::uint64_t> before;
    for (int looks = 0; looks < kLooksAtRest;) {
        if (Clock::now() >= deadline) return false;
        const auto now = timeRunAtRest(*pid_);
        looks = now && now == before ? looks + 1 : 0;
        before = now;
        std::this_thread::sleep_for(kLookInterval);
    }
    return true;
}

}  // namespace quil::linux_platform
