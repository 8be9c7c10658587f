#include "platform/linux/x11/windows/window_tree.h"

namespace quil::linux_platform {

std::vector<xcb_window_t> childrenOf(X11Connection& connection,
                                     std::span<const xcb_window_t> windows) {
    std::vector<xcb_query_tree_cookie_t> cookies;
    cookies.reserve(windows.size());
    for (const xcb_window_t window : windows) {
        cookies.push_back(xcb_query_tree(connection.get(), window));
    }
    std::vector<xcb_window_t> all;
    for (const auto cookie : cookies) {
        const auto tree = connection.reply(xcb_query_tree_reply, cookie);
        if (!tree) continue;
        const xcb_window_t* children = xcb_query_tree_children(tree.get());
        all.insert(all.end(), children, children + xcb_query_tree_children_length(tree.get()));
    }
    return all;
}

std::vector<xcb_window_t> childrenOfRoot(X11Connection& connection) {
    const xcb_window_t root = connection.root();
    return childrenOf(connection, {&root, 1});
}

}  // namespace quil::linux_platform
