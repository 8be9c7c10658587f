#include "platform/linux/input/key_receiver.h"

#include <poll.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

#include "platform/linux/x11/properties.h"
#include "platform/linux/x11/window_owners.h"
#include "platform/linux/x11/window_stack.h"

namespace quil::linux_platform {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr int kMostAncestors = 32;
constexpr milliseconds kLookInterval{4};
/// A process that has slept through this many looks is at rest.
constexpr int kLooksAtRest = 5;
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

std::optional<std::int32_t> processOf(X11Connection& connection, xcb_window_t window) {
    WindowOwners owners(connection, {window});
    return owners.read(0, readProperty(connection, window, "_NET_WM_PID"),
                       readProperty(connection, window, "WM_CLIENT_MACHINE"));
}

/// What the process's threads have run so far, in nanoseconds; nothing while one of them runs or
/// wants to.
std::optional<std::uint64_t> timeRunAtRest(std::int32_t pid) {
    std::uint64_t sum = 0;
    std::error_code error;
    const std::filesystem::path tasks = "/proc/" + std::to_string(pid) + "/task";
    for (const auto& task : std::filesystem::directory_iterator(tasks, error)) {
        std::string status;
        std::getline(std::ifstream(task.path() / "stat"), status);
        const std::size_t name = status.rfind(") ");
        if (name != std::string::npos && status.compare(name + 2, 1, "S") != 0) return {};
        std::uint64_t run = 0;
        std::ifstream(task.path() / "schedstat") >> run;
        sum += run;
    }
    return sum;
}

void selectRootEvents(X11Connection& connection, std::uint32_t mask) {
    xcb_change_window_attributes(connection.get(), connection.root(), XCB_CW_EVENT_MASK, &mask);
}

}  // namespace

KeyReceiver::KeyReceiver(X11Connection& connection)
    : connection_(connection), window_(focusedWindow(connection)) {
    // Toolkits often give the focus to a window inside of the one that everybody knows.
    xcb_window_t window = window_;
    for (int i = 0; i < kMostAncestors && window != XCB_WINDOW_NONE && window != connection.root();
         ++i, window = parentOf(connection, window)) {
        if (!answersPings(connection, window)) continue;
        window_ = window;
        answersPings_ = true;
        return;
    }
    if (window_ != XCB_WINDOW_NONE) pid_ = processOf(connection, window_);
}

bool KeyReceiver::waitUntilDone(milliseconds limit) {
    connection_.sync();
    if (window_ == XCB_WINDOW_NONE) return true;
    const auto deadline = Clock::now() + limit;
    return answersPings_ ? waitForPing(deadline) : waitForRest(deadline);
}

bool KeyReceiver::waitForPing(Clock::time_point deadline) {
    // No window manager uses a number like this, which stands for a time, for its own pings.
    static std::atomic<std::uint32_t> lastNumber = 0;
    const std::uint32_t number = ++lastNumber;
    xcb_client_message_event_t ping{};
    ping.response_type = XCB_CLIENT_MESSAGE;
    ping.format = 32;
    ping.window = window_;
    ping.type = connection_.atom("WM_PROTOCOLS");
    ping.data.data32[0] = connection_.atom("_NET_WM_PING");
    ping.data.data32[1] = number;
    ping.data.data32[2] = window_;
    // The answer is sent to the root window, to those who care about the windows on it (GTK) or
    // about itself (Qt).
    selectRootEvents(connection_,
                     XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_STRUCTURE_NOTIFY);
    xcb_send_event(connection_.get(), 0, window_, XCB_EVENT_MASK_NO_EVENT,
                   reinterpret_cast<const char*>(&ping));
    xcb_flush(connection_.get());
    bool isAnswered = false;
    while (!isAnswered && connection_.isAlive()) {
        if (const XcbPointer<xcb_generic_event_t> event{xcb_poll_for_event(connection_.get())}) {
            const auto& message = reinterpret_cast<const xcb_client_message_event_t&>(*event);
            isAnswered = (event->response_type & 0x7F) == XCB_CLIENT_MESSAGE &&
                         message.type == ping.type && message.data.data32[1] == number &&
                         message.data.data32[2] == window_;
            continue;
        }
        const auto left = std::chrono::ceil<milliseconds>(deadline - Clock::now());
        if (left <= milliseconds::zero()) break;
        pollfd socket{xcb_get_file_descriptor(connection_.get()), POLLIN, 0};
        poll(&socket, 1, static_cast<int>(left.count()));
    }
    selectRootEvents(connection_, XCB_EVENT_MASK_NO_EVENT);
    return isAnswered;
}

bool KeyReceiver::waitForRest(Clock::time_point deadline) const {
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
