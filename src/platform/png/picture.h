#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "platform/screen_capture.h"

namespace quil {

/// No side of an image may be longer, in pixels: twice the longest window of the X protocol.
inline constexpr std::int64_t kMaximumImageSide = 65535;
/// The most pixels of an image: eight 4K displays at two pixels per point.
inline constexpr std::int64_t kMaximumImagePixels = std::int64_t{8} * 7680 * 4320;

/// Whether an image of that size has pixels, and not too many.
bool isImageSize(std::int64_t width, std::int64_t height);

/// Pixels of a captured window, with the factor by which the finished image enlarges them. Keeping
/// the factor apart lets the encoder work on a quarter of the pixels of the usual image.
struct Picture {
    /// Size of `pixels`; the image's is `scale` times that in each direction.
    int width = 0;
    int height = 0;
    /// Every pixel becomes a square of that many pixels a side.
    int scale = 1;
    /// Rows from top to bottom without gaps, 0xAARRGGBB each, colours not multiplied by alpha.
    std::vector<std::uint32_t> pixels;
};

/// The picture as an image of `width` by `height` pixels. Made smaller in both directions, each is
/// the average of what it covers; else each is taken from the nearest pixel of the source. A whole
/// multiple of the source's size costs nothing but the factor. Empty when the picture is empty, or
/// the size is not one for images.
Picture resized(Picture picture, std::int64_t width, std::int64_t height);

/// A captured image that is a picture in memory.
class PictureImage : public CapturedImage {
  public:
    explicit PictureImage(Picture picture) : picture_(std::move(picture)) {}
    const Picture& picture() const { return picture_; }

  private:
    Picture picture_;
};

}  // namespace quil
