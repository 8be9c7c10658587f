#include "platform/linux/x11/capture/screen_capture.h"

#include <algorithm>

#include "platform/linux/x11/capture/pixel_format.h"
#include "platform/linux/x11/capture/window_content.h"
#include "platform/linux/x11/capture/window_shape.h"
#include "platform/linux/x11/displays/displays.h"
#include "platform/linux/x11/windows/window_stack.h"
#include "platform/png/picture.h"
#include "platform/png/png_encoder.h"

namespace quil::linux_platform {
namespace {

/// The part of the content that the window's frame is: all but the shadows.
struct Part {
    int x, y, width, height;
};

Part partOf(const WindowContent& content, const X11Window& window) {
    return {content.x + static_cast<int>(window.shadows.left),
            content.y + static_cast<int>(window.shadows.top), static_cast<int>(window.frame.width),
            static_cast<int>(window.frame.height)};
}

bool isInside(const Part& part, const WindowContent& content) {
    return part.x >= 0 && part.y >= 0 && part.width > 0 && part.height > 0 &&
           part.x + part.width <= content.pixmapWidth &&
           part.y + part.height <= content.pixmapHeight;
}

}  // namespace

X11ScreenCapture::Session* X11ScreenCapture::session() {
    auto connection = display_.connection();
    if (!connection) {
        session_ = nullptr;
    } else if (!session_ || session_->connection != connection) {
        session_ = std::make_unique<Session>(std::move(connection));
    }
    return session_.get();
}

std::optional<ShareableContent> X11ScreenCapture::getShareableContent(bool excludingDesktopWindows,
                                                                      bool onScreenWindowsOnly) {
    const auto connection = display_.connection();
    if (!connection) return {};
    ShareableContent content;
    auto windows = topLevelWindows(*connection);
    // The one that has the focus need not be the topmost of its application: tiling, "keep above".
    if (const auto active = activeWindow(*connection)) {
        std::stable_partition(windows.begin(), windows.end(),
                              [&](const X11Window& window) { return window.id == active->id; });
    }
    for (const X11Window& window : windows) {
        if (onScreenWindowsOnly && !window.onScreen) continue;
        if (excludingDesktopWindows && window.isDesktopElement) continue;
        content.windows.push_back({window.id, window.layer, window.pid, window.frame});
    }
    X11Displays displays(display_);
    std::uint32_t count = 0;
    if (displays.getActiveDisplayList(0, nullptr, &count) != 0) return content;
    std::vector<std::uint32_t> ids(count);
    if (displays.getActiveDisplayList(count, ids.data(), &count) != 0) return content;
    ids.resize(std::min<std::size_t>(ids.size(), count));
    for (const std::uint32_t id : ids) content.displays.push_back({id, displays.displayBounds(id)});
    return content;
}

std::unique_ptr<CapturedImage> X11ScreenCapture::captureImage(
    const ShareableWindow& window, const StreamConfiguration& configuration) {
    Session* const with = session();
    if (!with || !with->redirection.keepContent(window.windowId)) return nullptr;
    X11Connection& connection = *with->connection;

    const auto content = findWindowContent(with->connection, window.windowId);
    const auto described = describeWindows(connection, {window.windowId});
    if (!content || described.empty()) return nullptr;
    const Rect& frame = described.front().frame;
    const Part part = partOf(*content, described.front());
    if (frame.width != window.frame.width || frame.height != window.frame.height ||
        !isInside(part, *content)) {
        return nullptr;
    }

    const auto format = readPixelFormat(connection, content->depth, content->visual);
    if (!format) return nullptr;
    const std::uint8_t* pixels =
        with->transfer.fetch(content->pixmap.id(), part.x, part.y, part.width, part.height,
                             format->rowBytes(part.width) * static_cast<std::size_t>(part.height));
    if (!pixels) return nullptr;
    Picture picture = pictureFromImage(pixels, part.width, part.height, *format);
    with->transfer.release();
    clipToShape(connection, window.windowId, part.x - content->x, part.y - content->y, picture);
    picture = resized(std::move(picture), configuration.width, configuration.height);
    if (picture.width == 0) return nullptr;
    return std::make_unique<PictureImage>(std::move(picture));
}

std::unique_ptr<CapturedImage> X11ScreenCapture::captureDisplayImage(
    const ShareableDisplay& display, const StreamConfiguration& configuration) {
    Session* const with = session();
    if (!with) return nullptr;
    X11Connection& connection = *with->connection;
    const auto root = connection.reply(xcb_get_geometry_reply,
                                       xcb_get_geometry(connection.get(), connection.root()));
    const Rect& frame = display.frame;
    if (!root || frame.minX() < 0 || frame.minY() < 0 || frame.maxX() > root->width ||
        frame.maxY() > root->height || frame.width < 1 || frame.height < 1) {
        return nullptr;
    }
    const auto format = readPixelFormat(connection, root->depth, connection.screen().root_visual);
    if (!format) return nullptr;
    const int width = static_cast<int>(frame.width);
    const int height = static_cast<int>(frame.height);
    const std::uint8_t* pixels = with->transfer.fetch(
        connection.root(), static_cast<int>(frame.x), static_cast<int>(frame.y), width, height,
        format->rowBytes(width) * static_cast<std::size_t>(height));
    if (!pixels) return nullptr;
    Picture picture = pictureFromImage(pixels, width, height, *format);
    with->transfer.release();
    picture = resized(std::move(picture), configuration.width, configuration.height);
    if (picture.width == 0) return nullptr;
    return std::make_unique<PictureImage>(std::move(picture));
}

std::string X11ScreenCapture::pngRepresentation(const CapturedImage& image) {
    const auto* picture = dynamic_cast<const PictureImage*>(&image);
    return picture ? encodePng(picture->picture()) : std::string();
}

}  // namespace quil::linux_platform
