#include "platform/linux/x11/capture/window_content.h"

#include <xcb/composite.h>

#include <vector>

namespace quil::linux_platform {
namespace {

/// Frames of window managers are two or three windows deep.
constexpr int kMaximumNesting = 16;

/// The window and those around it up to the child of the root, inside first.
std::vector<xcb_window_t> pathToRoot(X11Connection& connection, xcb_window_t window) {
    std::vector<xcb_window_t> path;
    while (path.size() < kMaximumNesting) {
        const auto tree =
            connection.reply(xcb_query_tree_reply, xcb_query_tree(connection.get(), window));
        if (!tree || tree->parent == XCB_WINDOW_NONE) return {};
        path.push_back(window);
        if (tree->parent == tree->root) return path;
        window = tree->parent;
    }
    return {};
}

/// All questions about one window, sent at once, so that the replies fit together.
struct Questions {
    Questions(const std::shared_ptr<X11Connection>& connection, xcb_window_t window)
        : pixmap(connection, window),
          pixmapGeometry(xcb_get_geometry(connection->get(), pixmap.id())),
          windowGeometry(xcb_get_geometry(connection->get(), window)),
          attributes(xcb_get_window_attributes(connection->get(), window)) {}

    WindowPixmap pixmap;
    xcb_get_geometry_cookie_t pixmapGeometry;
    xcb_get_geometry_cookie_t windowGeometry;
    xcb_get_window_attributes_cookie_t attributes;
};

}  // namespace

WindowPixmap::WindowPixmap(std::shared_ptr<X11Connection> connection, xcb_window_t window)
    : connection_(std::move(connection)), id_(xcb_generate_id(connection_->get())) {
    xcb_composite_name_window_pixmap(connection_->get(), window, id_);
}

WindowPixmap::~WindowPixmap() {
    if (id_ != XCB_NONE) xcb_free_pixmap(connection_->get(), id_);
}

std::optional<WindowContent> findWindowContent(const std::shared_ptr<X11Connection>& connection,
                                               xcb_window_t window) {
    std::vector<Questions> questions;
    for (const xcb_window_t outer : pathToRoot(*connection, window)) {
        questions.emplace_back(connection, outer);
    }
    int x = 0;
    int y = 0;
    std::optional<WindowContent> content;
    for (Questions& asked : questions) {
        const auto pixmap = connection->reply(xcb_get_geometry_reply, asked.pixmapGeometry);
        const auto geometry = connection->reply(xcb_get_geometry_reply, asked.windowGeometry);
        const auto attributes =
            connection->reply(xcb_get_window_attributes_reply, asked.attributes);
        if (!geometry || !attributes || attributes->map_state != XCB_MAP_STATE_VIEWABLE) return {};
        if (content) continue;
        x += geometry->border_width;
        y += geometry->border_width;
        if (pixmap) {
            content.emplace(WindowContent{std::move(asked.pixmap), pixmap->width, pixmap->height, x,
                                          y, geometry->depth, attributes->visual});
            // The window was resized between the two replies.
            if (pixmap->width != geometry->width + 2 * geometry->border_width ||
                pixmap->height != geometry->height + 2 * geometry->border_width) {
                return {};
            }
        }
        x += geometry->x;
        y += geometry->y;
    }
    return content;
}

}  // namespace quil::linux_platform
