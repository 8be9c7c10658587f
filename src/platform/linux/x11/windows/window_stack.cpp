#include "platform/linux/x11/windows/window_stack.h"

#include <algorithm>

#include "platform/linux/x11/properties.h"
#include "platform/linux/x11/windows/window_manager.h"
#include "platform/linux/x11/windows/window_tree.h"

namespace quil::linux_platform {
namespace {

/// Window managers wrap windows into frames of two or three.
constexpr int kMaximumFrameDepth = 4;
/// Toolkits nest windows, too, and the focus is often on an inner one.
constexpr int kMaximumNesting = 64;

constexpr std::uint32_t kInputHint = 1;  // of the flags of WM_HINTS, ICCCM 4.1.2.4

/// Whether some client has asked to decide about the windows on the root, which only a window
/// manager does.
bool isManaged(X11Connection& connection) {
    const auto root =
        connection.reply(xcb_get_window_attributes_reply,
                         xcb_get_window_attributes(connection.get(), connection.root()));
    return root && (root->all_event_masks & XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT);
}

/// Whether window managers manage it: they put "WM_STATE" on every window of an application
/// (ICCCM 4.1.3.1) and not on their own frames.
std::vector<bool> areClients(X11Connection& connection, const std::vector<xcb_window_t>& windows) {
    std::vector<PropertyRequest> states;
    states.reserve(windows.size());
    for (const xcb_window_t window : windows) states.emplace_back(connection, window, "WM_STATE");
    std::vector<bool> exist;
    for (PropertyRequest& state : states) {
        state.read(connection);
        exist.push_back(state.exists());
    }
    return exist;
}

/// The application's window inside a window manager's frame: the first of its descendants that is
/// managed, level by level.
std::optional<xcb_window_t> clientInside(X11Connection& connection, xcb_window_t frame) {
    std::vector<xcb_window_t> level{frame};
    for (int depth = 0; depth < kMaximumFrameDepth && !level.empty(); ++depth) {
        const std::vector<bool> isClient = areClients(connection, level);
        const auto found = std::find(isClient.begin(), isClient.end(), true);
        if (found != isClient.end())
            return level[static_cast<std::size_t>(found - isClient.begin())];
        level = childrenOf(connection, level);
    }
    return {};
}

/// The applications' windows that are shown on the root, bottom to top.
std::vector<xcb_window_t> windowsOnRoot(X11Connection& connection, bool isManagedRoot) {
    const auto children = childrenOfRoot(connection);
    std::vector<xcb_get_window_attributes_cookie_t> cookies;
    cookies.reserve(children.size());
    for (const xcb_window_t child : children) {
        cookies.push_back(xcb_get_window_attributes(connection.get(), child));
    }
    std::vector<xcb_window_t> windows;
    for (std::size_t i = 0; i < children.size(); ++i) {
        const auto attributes = connection.reply(xcb_get_window_attributes_reply, cookies[i]);
        if (!attributes || attributes->_class != XCB_WINDOW_CLASS_INPUT_OUTPUT ||
            attributes->map_state != XCB_MAP_STATE_VIEWABLE) {
            continue;
        }
        const auto client = isManagedRoot ? clientInside(connection, children[i]) : std::nullopt;
        // Frames are among the windows that bypass the window manager; so are menus and tooltips.
        if (client || !attributes->override_redirect) {
            windows.push_back(client.value_or(children[i]));
        }
    }
    return windows;
}

/// The application's window that this window is, or is part of: the nearest managed one upward,
/// else (without a window manager) the child of the root.
std::optional<xcb_window_t> applicationWindowOf(X11Connection& connection, xcb_window_t window,
                                                bool isManagedRoot) {
    for (int depth = 0; depth < kMaximumNesting; ++depth) {
        const auto cookie = xcb_query_tree(connection.get(), window);
        const bool isClient = areClients(connection, {window}).front();
        const auto tree = connection.reply(xcb_query_tree_reply, cookie);
        if (!tree || window == tree->root) return {};
        if (isClient) return window;
        if (tree->parent == tree->root) {
            return isManagedRoot ? clientInside(connection, window) : std::optional(window);
        }
        window = tree->parent;
    }
    return {};
}

std::optional<xcb_window_t> windowUnderPointer(X11Connection& connection, bool isManagedRoot) {
    const auto pointer = connection.reply(xcb_query_pointer_reply,
                                          xcb_query_pointer(connection.get(), connection.root()));
    if (!pointer || pointer->child == XCB_WINDOW_NONE) return {};
    return applicationWindowOf(connection, pointer->child, isManagedRoot);
}

std::optional<xcb_window_t> windowWithInputFocus(X11Connection& connection) {
    const auto focus =
        connection.reply(xcb_get_input_focus_reply, xcb_get_input_focus(connection.get()));
    if (!focus || focus->focus == XCB_INPUT_FOCUS_NONE) return {};
    const bool isManagedRoot = isManaged(connection);
    const bool followsPointer =
        focus->focus == XCB_INPUT_FOCUS_POINTER_ROOT || focus->focus == connection.root();
    if (!followsPointer) return applicationWindowOf(connection, focus->focus, isManagedRoot);
    if (const auto window = windowUnderPointer(connection, isManagedRoot)) return window;
    if (isManagedRoot) return {};
    const auto windows = windowsOnRoot(connection, isManagedRoot);
    return windows.empty() ? std::nullopt : std::optional(windows.back());
}

/// Openbox goes on naming a window that has gone, whose number the server gives to another.
bool namesActiveWindow(const WindowManager& manager) {
    if (manager.active == XCB_WINDOW_NONE) return false;
    const auto& listed = manager.stacking;
    return !listed || std::find(listed->begin(), listed->end(), manager.active) != listed->end();
}

/// Some windows say that they take no focus, or take it when they like ("WM_HINTS").
bool takesFocus(X11Connection& connection, xcb_window_t window) {
    const auto hints = readProperty(connection, window, "WM_HINTS").numbers();
    return hints.size() < 2 || !(hints[0] & kInputHint) || hints[1] != 0;
}

}  // namespace

std::vector<X11Window> topLevelWindows(X11Connection& connection) {
    const auto manager = readWindowManager(connection);
    auto stack = manager && manager->stacking ? *manager->stacking
                                              : windowsOnRoot(connection, isManaged(connection));
    std::reverse(stack.begin(), stack.end());
    return describeWindows(connection, stack);
}

std::optional<X11Window> activeWindow(X11Connection& connection) {
    const auto manager = readWindowManager(connection);
    const auto window = manager && namesActiveWindow(*manager) ? std::optional(manager->active)
                                                               : windowWithInputFocus(connection);
    if (!window) return {};
    auto described = describeWindows(connection, {*window});
    return described.empty() ? std::nullopt : std::optional(std::move(described.front()));
}

std::optional<X11Window> windowInFront(X11Connection& connection) {
    auto window = activeWindow(connection);
    if (!window || !window->onScreen) return {};
    const auto focused = windowWithInputFocus(connection);
    const bool isElsewhere = focused && focused != window->id;
    return isElsewhere && takesFocus(connection, window->id) ? std::nullopt : std::move(window);
}

}  // namespace quil::linux_platform
