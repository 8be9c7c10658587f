#include "platform/linux/x11/windows/window_activation.h"

#include <chrono>
#include <optional>
#include <thread>

#include "platform/linux/x11/properties.h"
#include "platform/linux/x11/windows/window_manager.h"

namespace quil::linux_platform {
namespace {

/// The source indication of pagers and the like, whose requests express the wish of the user
/// (Extended Window Manager Hints, "Source indication in requests").
constexpr std::uint32_t kPager = 2;

constexpr std::uint32_t kAllWorkspaces = 0xFFFFFFFF;
/// For the window manager to show the window's workspace of its own accord.
constexpr std::chrono::milliseconds kWorkspaceTimeout{200};
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

/// The window's workspace, when it is not the current one.
std::optional<std::uint32_t> otherWorkspaceOf(X11Connection& connection, xcb_window_t window) {
    const auto workspace = readProperty(connection, window, "_NET_WM_DESKTOP").number();
    const auto current =
        readProperty(connection, connection.root(), "_NET_CURRENT_DESKTOP").number();
    const bool isOther = workspace && current && workspace != current;
    return isOther && *workspace != kAllWorkspaces ? workspace : std::nullopt;
}

/// Some window managers (Openbox, Metacity) only mark a window of another workspace as demanding
/// attention when they are asked to activate it. With others, a change of workspace would come
/// between the window and its focus.
void showWorkspaceOf(X11Connection& connection, xcb_window_t window) {
    auto workspace = otherWorkspaceOf(connection, window);
    for (auto left = kWorkspaceTimeout; workspace && left > left.zero(); left -= kPollInterval) {
        std::this_thread::sleep_for(kPollInterval);
        workspace = otherWorkspaceOf(connection, window);
    }
    if (!workspace) return;
    askWindowManager(connection, connection.root(), "_NET_CURRENT_DESKTOP", *workspace,
                     XCB_CURRENT_TIME);
    activate(connection, window);
}

}  // namespace

void bringToFront(X11Connection& connection, xcb_window_t window) {
    if (readWindowManager(connection)) {
        activate(connection, window);
        showWorkspaceOf(connection, window);
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
