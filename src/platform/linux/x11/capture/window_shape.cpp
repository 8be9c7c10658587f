#include "platform/linux/x11/capture/window_shape.h"

#include <xcb/shape.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace quil::linux_platform {

void clipToShape(X11Connection& connection, xcb_window_t window, int x, int y, Picture& picture) {
    if (!connection.hasExtension(xcb_shape_id)) return;
    const auto reply =
        connection.reply(xcb_shape_get_rectangles_reply,
                         xcb_shape_get_rectangles(connection.get(), window, XCB_SHAPE_SK_BOUNDING));
    if (!reply) return;
    const std::span rectangles(
        xcb_shape_get_rectangles_rectangles(reply.get()),
        static_cast<std::size_t>(xcb_shape_get_rectangles_rectangles_length(reply.get())));
    const auto coversAll = [&](const xcb_rectangle_t& part) {
        return part.x <= x && part.y <= y && part.x + part.width >= x + picture.width &&
               part.y + part.height >= y + picture.height;
    };
    if (std::any_of(rectangles.begin(), rectangles.end(), coversAll)) return;

    std::vector<std::uint32_t> clipped(picture.pixels.size());
    for (const xcb_rectangle_t& part : rectangles) {
        const int left = std::clamp(part.x - x, 0, picture.width);
        const int right = std::clamp(part.x + part.width - x, left, picture.width);
        const int bottom = std::clamp(part.y + part.height - y, 0, picture.height);
        for (int row = std::max(0, part.y - y); row < bottom; ++row) {
            const auto begin = std::ptrdiff_t{row} * picture.width;
            std::copy(picture.pixels.begin() + begin + left, picture.pixels.begin() + begin + right,
                      clipped.begin() + begin + left);
        }
    }
    picture.pixels = std::move(clipped);
}

}  // namespace quil::linux_platform
