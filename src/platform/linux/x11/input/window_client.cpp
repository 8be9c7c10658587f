#include "platform/linux/x11/input/window_client.h"

#include <poll.h>

#include <algorithm>

#include "platform/linux/applications/idle_watch.h"
#include "platform/linux/applications/processes.h"
#include "platform/linux/x11/properties.h"
#include "platform/linux/x11/windows/window_owners.h"

namespace quil::linux_platform {
namespace {

using std::chrono::milliseconds;
using std::chrono::nanoseconds;

constexpr int kMaximumAncestors = 32;
/// Keys may close the window that they go to; then there is no reply.
constexpr milliseconds kWindowLookInterval{100};
constexpr milliseconds kUnresponsiveTimeout{5000};
constexpr milliseconds kBusyTimeout{30'000};
/// A program that hangs still has a thread that looks at the clock now and then.
constexpr nanoseconds kMinimumActivity = milliseconds(20);

bool declaresPings(X11Connection& connection, xcb_window_t window) {
    return readProperty(connection, window, "WM_PROTOCOLS")
        .contains(connection.atom("_NET_WM_PING"));
}

xcb_window_t parentOf(X11Connection& connection, xcb_window_t window) {
    const auto tree =
        connection.reply(xcb_query_tree_reply, xcb_query_tree(connection.get(), window));
    return tree ? tree->parent : xcb_window_t{XCB_WINDOW_NONE};
}

std::optional<std::int32_t> processOf(X11Connection& connection, xcb_window_t window) {
    WindowOwners owners(connection, {window});
    return owners.read(0, readProperty(connection, window, "_NET_WM_PID"),
                       readProperty(connection, window, "WM_CLIENT_MACHINE"));
}

/// Higher than the numbers of all earlier pings, whose replies may still come.
std::uint32_t firstPing() {
    using Tick = std::chrono::duration<std::int64_t, std::ratio<1, 10'000>>;
    return static_cast<std::uint32_t>(
        std::chrono::floor<Tick>(std::chrono::steady_clock::now().time_since_epoch()).count());
}

void selectRootEvents(X11Connection& connection, std::uint32_t mask) {
    xcb_change_window_attributes(connection.get(), connection.root(), XCB_CW_EVENT_MASK, &mask);
}

/// What the process has run and wanted to run.
std::uint64_t activityOf(std::int32_t pid) {
    std::uint64_t sum = 0;
    for (const ThreadActivity& thread : threadsOf(pid)) sum += thread.cpuTime + thread.waitTime;
    return sum;
}

}  // namespace

WindowClient::WindowClient(X11Connection& connection, xcb_window_t window)
    : connection_(connection), window_(window), lastPing_(firstPing()) {
    noteReplied(lastPing_);
    if (window_ == XCB_WINDOW_NONE || window_ == connection.root()) {
        window_ = XCB_WINDOW_NONE;
        return;
    }
    pid_ = processOf(connection, window_);
    // Toolkits often give the focus to a window inside of the top-level one.
    for (int i = 0;
         i < kMaximumAncestors && window != XCB_WINDOW_NONE && window != connection.root();
         ++i, window = parentOf(connection, window)) {
        if (!declaresPings(connection, window)) continue;
        window_ = window;
        repliesToPings_ = true;
        // The replies are sent to the root window, to those who care about the windows on it (GTK)
        // or about itself (Qt).
        selectRootEvents(connection_,
                         XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_STRUCTURE_NOTIFY);
        return;
    }
}

WindowClient::~WindowClient() {
    if (repliesToPings_) selectRootEvents(connection_, XCB_EVENT_MASK_NO_EVENT);
}

void WindowClient::noteReplied(std::uint32_t last) {
    lastReplied_ = last;
    lastProgress_ = lastActivity_ = Clock::now();
}

void WindowClient::sendPing() {
    if (lastReplied_ == lastPing_) noteReplied(lastPing_);  // no wait has begun yet
    ++lastPing_;
    if (!repliesToPings_) return;
    xcb_client_message_event_t ping{};
    ping.response_type = XCB_CLIENT_MESSAGE;
    ping.format = 32;
    ping.window = window_;
    ping.type = connection_.atom("WM_PROTOCOLS");
    ping.data.data32[0] = connection_.atom("_NET_WM_PING");
    // Stands for a time.
    ping.data.data32[1] = lastPing_;
    ping.data.data32[2] = window_;
    xcb_send_event(connection_.get(), 0, window_, XCB_EVENT_MASK_NO_EVENT,
                   reinterpret_cast<const char*>(&ping));
    xcb_flush(connection_.get());
}

bool WindowClient::waitForPings(std::uint32_t open, milliseconds timeout) {
    const auto deadline = Clock::now() + timeout;
    if (window_ == XCB_WINDOW_NONE) noteReplied(lastPing_);
    while (lastPing_ - lastReplied_ > open) {
        bool hasReplied = false;
        if (repliesToPings_) {
            hasReplied = waitForReply(deadline);
        } else {
            connection_.sync();
            hasReplied = IdleWatch({pid_.value_or(0)}).wait(deadline);
            if (hasReplied) noteReplied(lastPing_);
        }
        if (hasReplied) continue;
        checkActivity();
        return false;
    }
    return true;
}

void WindowClient::checkActivity() {
    if (!pid_) return;
    const std::uint64_t activity = activityOf(*pid_);
    if (activity - activity_ >= static_cast<std::uint64_t>(kMinimumActivity.count())) {
        lastActivity_ = Clock::now();
    }
    activity_ = activity;
}

bool WindowClient::isHanging() const {
    const auto now = Clock::now();
    return now - lastActivity_ >= kUnresponsiveTimeout || now - lastProgress_ >= kBusyTimeout;
}

/// Takes the next reply to one of our pings; false when there is none.
bool WindowClient::takeReply() {
    const xcb_atom_t protocols = connection_.atom("WM_PROTOCOLS");
    while (const XcbPointer<xcb_generic_event_t> event{xcb_poll_for_event(connection_.get())}) {
        const auto& message = reinterpret_cast<const xcb_client_message_event_t&>(*event);
        const bool isReply = (event->response_type & 0x7F) == XCB_CLIENT_MESSAGE &&
                             message.type == protocols && message.data.data32[2] == window_ &&
                             message.data.data32[1] - lastReplied_ - 1 < lastPing_ - lastReplied_;
        if (!isReply) continue;
        noteReplied(message.data.data32[1]);
        return true;
    }
    return false;
}

bool WindowClient::waitForReply(Clock::time_point deadline) {
    auto nextLook = Clock::now() + kWindowLookInterval;
    while (connection_.isAlive()) {
        if (takeReply()) return true;
        const auto left = std::chrono::ceil<milliseconds>(deadline - Clock::now());
        if (left <= milliseconds::zero()) return false;
        pollfd socket{xcb_get_file_descriptor(connection_.get()), POLLIN, 0};
        poll(&socket, 1, static_cast<int>(std::min(left, kWindowLookInterval).count()));
        if (Clock::now() < nextLook) continue;
        nextLook = Clock::now() + kWindowLookInterval;
        if (!connection_.hasWindow(window_)) {
            noteReplied(lastPing_);
            return true;
        }
    }
    return false;
}

}  // namespace quil::linux_platform
