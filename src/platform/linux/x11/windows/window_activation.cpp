#include "platform/linux/x11/windows/window_activation.h"

#include <chrono>
#include <thread>

#include "platform/linux/x11/properties.h"
#include "platform/linux/x11/windows/window_manager.h"
#include "platform/linux/x11/windows/window_stack.h"

namespace quil::linux_platform {
namespace {

/// The source indication of pagers and the like, whose requests express the wish of the user
/// (Extended Window Manager Hints, "Source indication in requests").
constexpr std::uint32_t kPager = 2;

/// For the window manager to bring the window, before it is asked again.
constexpr std::chrono::milliseconds kRequestTimeout{200};
constexpr int kRequests = 3;
constexpr std::chrono::milliseconds kPollInterval{10};

void askWindowManager(X11Connection& connection, xcb_window_t window, const char* what,
                      std::uint32_t first, std::uint32_t second) {
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window;
    message.type = connection.atom(what);
    message.data.data32[0] = first;
    message.data.data32[1] = second;
    xcb_send_event(connection.get(), 0, connection.root(),
                   XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   reinterpret_cast<const char*>(&message));
}

void activate(X11Connection& connection, xcb_window_t window) {
    askWindowManager(connection, window, "_NET_ACTIVE_WINDOW", kPager, XCB_CURRENT_TIME);
}

/// Some window managers (Openbox, Metacity) only mark a window of another workspace as demanding
/// attention when they are asked to activate it. With others, a change of workspace would come
/// between the window and its focus.
void showWorkspaceOf(X11Connection& connection, xcb_window_t window) {
    const auto workspace = readProperty(connection, window, "_NET_WM_DESKTOP").number();
    const auto current =
        readProperty(connection, connection.root(), "_NET_CURRENT_DESKTOP").number();
    const bool isOther = workspace && current && workspace != current;
    if (!isOther || *workspace == kAllWorkspaces) return;
    askWindowManager(connection, connection.root(), "_NET_CURRENT_DESKTOP", *workspace,
                     XCB_CURRENT_TIME);
}

/// Waits for the window to be in front; whether it is.
bool hasCome(X11Connection& connection, xcb_window_t window) {
    for (auto left = kRequestTimeout; left > left.zero(); left -= kPollInterval) {
        const auto front = windowInFront(connection);
        if (front && front->id == window) return true;
        std::this_thread::sleep_for(kPollInterval);
    }
    return false;
}

}  // namespace

void bringToFront(X11Connection& connection, xcb_window_t window) {
    if (readWindowManager(connection)) {
        // One that is busy with a change of its own (Metacity with a window that was just
        // minimised) may give the focus to another window after it was asked.
        for (int request = 0; request < kRequests; ++request) {
            if (request > 0) showWorkspaceOf(connection, window);
            activate(connection, window);
            if (hasCome(connection, window)) break;
        }
    } else {
        const std::uint32_t above = XCB_STACK_MODE_ABOVE;
        xcb_map_window(connection.get(), window);
        xcb_configure_window(connection.get(), window, XCB_CONFIG_WINDOW_STACK_MODE, &above);
        xcb_set_input_focus(connection.get(), XCB_INPUT_FOCUS_PARENT, window, XCB_CURRENT_TIME);
    }
    connection.sync();
    connection.discardEvents();
}

}  // namespace quil::linux_platform
