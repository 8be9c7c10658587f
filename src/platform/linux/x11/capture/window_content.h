#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <utility>

#include "platform/linux/x11/connection.h"

namespace quil::linux_platform {

/// A pixmap that holds a window's pixels. It stays, with what it shows, when the window is resized
/// or goes away.
class WindowPixmap {
  public:
    /// Asks for the pixmap; a window that has none of its own gives a pixmap that does not exist.
    WindowPixmap(std::shared_ptr<X11Connection> connection, xcb_window_t window);
    WindowPixmap(WindowPixmap&& other) noexcept
        : connection_(std::move(other.connection_)), id_(std::exchange(other.id_, XCB_NONE)) {}
    WindowPixmap& operator=(WindowPixmap&&) = delete;
    ~WindowPixmap();

    xcb_pixmap_t id() const { return id_; }

  private:
    std::shared_ptr<X11Connection> connection_;
    xcb_pixmap_t id_;
};

/// Where the pixels of a window are: in a pixmap of its own, or in that of the frame around it.
/// What is in front of the window on the screen is not in it.
struct WindowContent {
    WindowPixmap pixmap;
    int pixmapWidth = 0;
    int pixmapHeight = 0;
    /// The position in the pixmap of the window's top-left pixel, its border left out.
    int x = 0;
    int y = 0;
    /// Of the window that the pixmap belongs to; they say how pixels are stored.
    std::uint8_t depth = 0;
    xcb_visualid_t visual = 0;
};

/// Nothing when the window is not shown or has gone, or no pixmap holds it: its redirection has not
/// been asked for.
std::optional<WindowContent> findWindowContent(const std::shared_ptr<X11Connection>& connection,
                                               xcb_window_t window);

}  // namespace quil::linux_platform
