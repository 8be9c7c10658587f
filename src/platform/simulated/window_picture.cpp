#include "platform/simulated/window_picture.h"

#include <algorithm>
#include <cmath>

namespace quil::simulated {
namespace {

constexpr std::uint32_t kOpaque = 0xFF000000;
constexpr std::uint32_t kBlack = 0;

class Painter {
  public:
    Painter(Picture& picture, Rect frame)
        : picture_(picture),
          frame_(frame),
          scaleX_(picture.width / frame.width),
          scaleY_(picture.height / frame.height) {}

    void paintWindow(const Window& window) {
        paintRectangle(window.frame(), window.colour(), /*isFramed=*/false);
        paint(window);
    }

    void paint(const Element& element) {
        for (const auto& child : element.children()) {
            if (const auto rectangle = child->rectangle()) {
                paintRectangle(*rectangle, elementColour(*child));
            }
            paint(*child);
        }
    }

  private:
    void paintRectangle(const Rect& rect, std::uint32_t colour, bool isFramed = true) {
        const int left = pixel((rect.minX() - frame_.x) * scaleX_, picture_.width);
        const int right = pixel((rect.maxX() - frame_.x) * scaleX_, picture_.width);
        const int top = pixel((rect.minY() - frame_.y) * scaleY_, picture_.height);
        const int bottom = pixel((rect.maxY() - frame_.y) * scaleY_, picture_.height);
        for (int y = top; y < bottom; ++y) {
            for (int x = left; x < right; ++x) {
                const bool edge =
                    isFramed && (y == top || y == bottom - 1 || x == left || x == right - 1);
                picture_
                    .pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(picture_.width) +
                            static_cast<std::size_t>(x)] = kOpaque | (edge ? kBlack : colour);
            }
        }
    }

    static int pixel(double position, int limit) {
        // Clamped before the conversion, which huge and non-finite positions would not survive.
        if (std::isnan(position)) return 0;
        return static_cast<int>(std::clamp(position, 0.0, static_cast<double>(limit)));
    }

    Picture& picture_;
    const Rect frame_;
    const double scaleX_;
    const double scaleY_;
};

}  // namespace

Picture drawWindow(const Window& window, std::int64_t width, std::int64_t height) {
    Picture picture{static_cast<int>(width), static_cast<int>(height), 1, {}};
    picture.pixels.assign(static_cast<std::size_t>(width * height), kOpaque | window.colour());
    Painter(picture, window.frame()).paint(window);
    return picture;
}

Picture drawScreen(const std::vector<Window*>& windows, Rect frame, std::int64_t width,
                   std::int64_t height) {
    Picture picture{static_cast<int>(width), static_cast<int>(height), 1, {}};
    picture.pixels.assign(static_cast<std::size_t>(width * height), kOpaque | kBlack);
    Painter painter(picture, frame);
    for (auto window = windows.rbegin(); window != windows.rend(); ++window) {
        if ((*window)->onScreen()) painter.paintWindow(**window);
    }
    return picture;
}

std::uint32_t elementColour(const Element& element) {
    std::uint32_t hash = 2166136261;  // FNV-1a
    for (const char byte : element.role() + '\n' + element.text("AXTitle")) {
        hash = (hash ^ static_cast<unsigned char>(byte)) * 16777619;
    }
    return hash & 0xFFFFFF;
}

}  // namespace quil::simulated
