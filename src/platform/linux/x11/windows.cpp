#include "platform/linux/x11/windows.h"

#include <unistd.h>
#include <xcb/res.h>

#include <algorithm>
#include <array>
#include <climits>

#include "platform/linux/x11/properties.h"

namespace quil::linux_platform {
namespace {

constexpr std::uint32_t kAllWorkspaces = 0xFFFFFFFF;

/// Window types of the Extended Window Manager Hints that are not ordinary windows, with the levels
/// that CGWindowLevelForKey gives the nearest kind of window on a Mac.
struct TypeLayer {
    std::string_view type;
    std::int64_t layer;
};
constexpr std::int64_t kDesktopLayer = -2147483623;  // kCGDesktopWindowLevel
constexpr TypeLayer kTypeLayers[] = {
    {"_NET_WM_WINDOW_TYPE_DESKTOP", kDesktopLayer},
    {"_NET_WM_WINDOW_TYPE_DOCK", 20},            // kCGDockWindowLevel
    {"_NET_WM_WINDOW_TYPE_TOOLBAR", 3},          // kCGTornOffMenuWindowLevel
    {"_NET_WM_WINDOW_TYPE_MENU", 3},             // kCGTornOffMenuWindowLevel
    {"_NET_WM_WINDOW_TYPE_NOTIFICATION", 25},    // kCGStatusWindowLevel
    {"_NET_WM_WINDOW_TYPE_DROPDOWN_MENU", 101},  // kCGPopUpMenuWindowLevel
    {"_NET_WM_WINDOW_TYPE_POPUP_MENU", 101},     // kCGPopUpMenuWindowLevel
    {"_NET_WM_WINDOW_TYPE_COMBO", 101},          // kCGPopUpMenuWindowLevel
    {"_NET_WM_WINDOW_TYPE_TOOLTIP", 102},        // kCGOverlayWindowLevel
    {"_NET_WM_WINDOW_TYPE_DND", 500},            // kCGDraggingWindowLevel
};

/// A window can name several types, the best first; the first known one counts.
std::int64_t layerOf(X11Connection& connection, const std::vector<std::uint32_t>& types) {
    for (const std::uint32_t type : types) {
        if (type == connection.atom("_NET_WM_WINDOW_TYPE_NORMAL") ||
            type == connection.atom("_NET_WM_WINDOW_TYPE_DIALOG") ||
            type == connection.atom("_NET_WM_WINDOW_TYPE_UTILITY") ||
            type == connection.atom("_NET_WM_WINDOW_TYPE_SPLASH")) {
            return 0;
        }
        for (const TypeLayer& entry : kTypeLayers) {
            if (type == connection.atom(entry.type)) return entry.layer;
        }
    }
    return 0;
}

std::string hostName() {
    std::array<char, HOST_NAME_MAX + 1> name{};
    return gethostname(name.data(), name.size() - 1) == 0 ? name.data() : "";
}

/// The windows' processes by what the server knows of its clients (X-Resource 1.2).
class ClientProcesses {
  public:
    ClientProcesses(X11Connection& connection, const std::vector<xcb_window_t>& windows)
        : connection_(connection), supported_(connection.hasExtension(xcb_res_id)) {
        if (!supported_) return;
        for (const xcb_window_t window : windows) {
            const xcb_res_client_id_spec_t wanted{window, XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID};
            cookies_.push_back(xcb_res_query_client_ids(connection.get(), 1, &wanted));
        }
    }

    /// The process of the n-th window. To be asked once, in order.
    std::optional<std::int32_t> read(std::size_t index) {
        if (!supported_) return {};
        const auto answer = connection_.reply(xcb_res_query_client_ids_reply, cookies_[index]);
        if (!answer) return {};
        for (auto id = xcb_res_query_client_ids_ids_iterator(answer.get()); id.rem > 0;
             xcb_res_client_id_value_next(&id)) {
            if (!(id.data->spec.mask & XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID)) continue;
            if (xcb_res_client_id_value_value_length(id.data) < 1) continue;
            const std::uint32_t pid = *xcb_res_client_id_value_value(id.data);
            if (pid > 0 && pid <= INT32_MAX) return static_cast<std::int32_t>(pid);
        }
        return {};
    }

  private:
    X11Connection& connection_;
    bool supported_;
    std::vector<xcb_res_query_client_ids_cookie_t> cookies_;
};

/// Everything asked about one window, sent at once.
struct WindowRequests {
    WindowRequests(X11Connection& c, xcb_window_t w)
        : window(w),
          attributes(xcb_get_window_attributes(c.get(), w)),
          geometry(xcb_get_geometry(c.get(), w)),
          origin(xcb_translate_coordinates(c.get(), w, c.root(), 0, 0)),
          properties{{{c, w, "_NET_WM_NAME"},
                      {c, w, "WM_NAME"},
                      {c, w, "_NET_WM_WINDOW_TYPE"},
                      {c, w, "_NET_WM_STATE"},
                      {c, w, "_NET_WM_DESKTOP"},
                      {c, w, "_GTK_FRAME_EXTENTS"},
                      {c, w, "_NET_WM_PID"},
                      {c, w, "WM_CLIENT_MACHINE"},
                      {c, w, "WM_CLASS"},
                      {c, w, "_GTK_APPLICATION_ID"}}} {}

    enum {
        netName,
        name,
        type,
        state,
        workspace,
        extents,
        pid,
        machine,
        wmClass,
        gtkApplicationId,
        propertyCount
    };

    xcb_window_t window;
    xcb_get_window_attributes_cookie_t attributes;
    xcb_get_geometry_cookie_t geometry;
    xcb_translate_coordinates_cookie_t origin;
    std::array<PropertyRequest, propertyCount> properties;
};

X11Window::Extents extentsFrom(const std::vector<std::uint32_t>& numbers, double width,
                               double height) {
    if (numbers.size() != 4) return {};
    const X11Window::Extents extents{
        static_cast<double>(numbers[0]), static_cast<double>(numbers[1]),
        static_cast<double>(numbers[2]), static_cast<double>(numbers[3])};
    const bool plausible =
        extents.left + extents.right < width && extents.top + extents.bottom < height;
    return plausible ? extents : X11Window::Extents{};
}

/// "_NET_WM_PID" is set by the client itself and may count another machine's processes.
std::optional<std::int32_t> claimedPid(const PropertyRequest& pid, const PropertyRequest& machine) {
    const auto number = pid.number();
    if (!number || *number == 0 || *number > INT32_MAX) return {};
    if (machine.text() && *machine.text() != hostName()) return {};
    return static_cast<std::int32_t>(*number);
}

/// WM_CLASS holds two strings, each ended by a NUL.
void setClass(X11Window& window, const std::optional<std::string>& text) {
    if (!text) return;
    const std::size_t end = text->find('\0');
    window.instanceName = text->substr(0, end);
    if (end != std::string::npos)
        window.className = text->substr(end + 1, text->find('\0', end + 1) - end - 1);
}

std::optional<X11Window> describe(X11Connection& connection, WindowRequests& requests,
                                  std::optional<std::int32_t> clientPid,
                                  std::optional<std::uint32_t> currentWorkspace) {
    const auto attributes = connection.reply(xcb_get_window_attributes_reply, requests.attributes);
    const auto geometry = connection.reply(xcb_get_geometry_reply, requests.geometry);
    const auto origin = connection.reply(xcb_translate_coordinates_reply, requests.origin);
    for (PropertyRequest& property : requests.properties) property.read(connection);
    if (!attributes || !geometry || !origin) return {};

    auto& properties = requests.properties;
    X11Window window;
    window.id = requests.window;
    window.title = properties[WindowRequests::netName].text();
    if (!window.title) window.title = properties[WindowRequests::name].text();

    const double width = geometry->width;
    const double height = geometry->height;
    window.shadows = extentsFrom(properties[WindowRequests::extents].numbers(), width, height);
    window.frame = {origin->dst_x + window.shadows.left, origin->dst_y + window.shadows.top,
                    width - window.shadows.left - window.shadows.right,
                    height - window.shadows.top - window.shadows.bottom};

    window.layer = layerOf(connection, properties[WindowRequests::type].numbers());
    window.isDesktopElement = window.layer == kDesktopLayer;
    const auto& states = properties[WindowRequests::state].numbers();
    const bool hidden = std::find(states.begin(), states.end(),
                                  connection.atom("_NET_WM_STATE_HIDDEN")) != states.end();
    const auto workspace = properties[WindowRequests::workspace].number();
    const bool elsewhere = workspace && currentWorkspace && *workspace != *currentWorkspace &&
                           *workspace != kAllWorkspaces;
    window.onScreen = attributes->map_state == XCB_MAP_STATE_VIEWABLE && !hidden && !elsewhere;

    window.pid = clientPid ? clientPid
                           : claimedPid(properties[WindowRequests::pid],
                                        properties[WindowRequests::machine]);
    setClass(window, properties[WindowRequests::wmClass].text());
    window.gtkApplicationId = properties[WindowRequests::gtkApplicationId].text().value_or("");
    return window;
}

/// Whether a window manager that follows the Extended Window Manager Hints runs: the root names a
/// window that names itself.
bool hasWindowManager(X11Connection& connection) {
    const auto check = readNumbers(connection, connection.root(), "_NET_SUPPORTING_WM_CHECK");
    return !check.empty() &&
           readNumbers(connection, check.front(), "_NET_SUPPORTING_WM_CHECK") == check;
}

/// The windows that applications put on the root themselves, bottom to top.
std::vector<xcb_window_t> rootChildren(X11Connection& connection) {
    const auto tree =
        connection.reply(xcb_query_tree_reply, xcb_query_tree(connection.get(), connection.root()));
    if (!tree) return {};
    const xcb_window_t* children = xcb_query_tree_children(tree.get());
    const std::vector<xcb_window_t> all(children,
                                        children + xcb_query_tree_children_length(tree.get()));
    std::vector<xcb_get_window_attributes_cookie_t> cookies;
    for (const xcb_window_t child : all) {
        cookies.push_back(xcb_get_window_attributes(connection.get(), child));
    }
    std::vector<xcb_window_t> ordinary;
    for (std::size_t i = 0; i < all.size(); ++i) {
        const auto attributes = connection.reply(xcb_get_window_attributes_reply, cookies[i]);
        if (!attributes || attributes->override_redirect ||
            attributes->_class != XCB_WINDOW_CLASS_INPUT_OUTPUT ||
            attributes->map_state == XCB_MAP_STATE_UNMAPPED) {
            continue;
        }
        ordinary.push_back(all[i]);
    }
    return ordinary;
}

/// The child of the root that holds the window; nothing for the root and for what is not below it.
std::optional<xcb_window_t> topLevelOf(X11Connection& connection, xcb_window_t window) {
    constexpr int kMaximumDepth = 64;
    for (int depth = 0; depth < kMaximumDepth; ++depth) {
        const auto tree =
            connection.reply(xcb_query_tree_reply, xcb_query_tree(connection.get(), window));
        if (!tree || window == tree->root) return {};
        if (tree->parent == tree->root) return window;
        window = tree->parent;
    }
    return {};
}

}  // namespace

std::vector<X11Window> topLevelWindows(X11Connection& connection) {
    std::vector<xcb_window_t> stack =
        hasWindowManager(connection)
            ? readNumbers(connection, connection.root(), "_NET_CLIENT_LIST_STACKING")
            : rootChildren(connection);
    std::reverse(stack.begin(), stack.end());
    return describeWindows(connection, stack);
}

std::optional<xcb_window_t> activeWindow(X11Connection& connection) {
    if (hasWindowManager(connection)) {
        const auto active = readNumbers(connection, connection.root(), "_NET_ACTIVE_WINDOW");
        if (active.empty() || active.front() == XCB_WINDOW_NONE) return {};
        return active.front();
    }
    const auto focus =
        connection.reply(xcb_get_input_focus_reply, xcb_get_input_focus(connection.get()));
    if (!focus || focus->focus <= XCB_INPUT_FOCUS_POINTER_ROOT) return {};
    return topLevelOf(connection, focus->focus);
}

std::vector<X11Window> describeWindows(X11Connection& connection,
                                       const std::vector<xcb_window_t>& windows) {
    const auto workspace = readNumbers(connection, connection.root(), "_NET_CURRENT_DESKTOP");
    const auto current = workspace.empty() ? std::nullopt : std::optional(workspace.front());
    std::vector<WindowRequests> requests;
    requests.reserve(windows.size());
    for (const xcb_window_t window : windows) requests.emplace_back(connection, window);
    ClientProcesses processes(connection, windows);
    std::vector<X11Window> described;
    for (std::size_t i = 0; i < windows.size(); ++i) {
        const auto pid = processes.read(i);
        if (auto window = describe(connection, requests[i], pid, current)) {
            described.push_back(std::move(*window));
        }
    }
    return described;
}

}  // namespace quil::linux_platform
