#include "platform/png/picture.h"

#include <cstddef>

namespace quil {

bool isImageSize(std::int64_t width, std::int64_t height) {
    return width >= 1 && height >= 1 && width <= kMaximumImageSide && height <= kMaximumImageSide &&
           width * height <= kMaximumImagePixels;
}

Picture resized(Picture picture, std::int64_t width, std::int64_t height) {
    if (!isImageSize(picture.width, picture.height) || !isImageSize(width, height)) return {};
    const std::int64_t factor = width / picture.width;
    if (picture.scale == 1 && factor * picture.width == width &&
        factor * picture.height == height) {
        picture.scale = static_cast<int>(factor);
        return picture;
    }

    Picture result;
    result.width = static_cast<int>(width);
    result.height = static_cast<int>(height);
    result.pixels.reserve(static_cast<std::size_t>(width * height));
    // The source pixel under the middle of each new one.
    const auto source = [](std::int64_t at, std::int64_t size, std::int64_t sourceSize) {
        return static_cast<std::size_t>((2 * at + 1) * sourceSize / (2 * size));
    };
    for (std::int64_t y = 0; y < height; ++y) {
        const std::size_t row =
            source(y, height, picture.height) * static_cast<std::size_t>(picture.width);
        for (std::int64_t x = 0; x < width; ++x) {
            result.pixels.push_back(picture.pixels[row + source(x, width, picture.width)]);
        }
    }
    return result;
}

}  // namespace quil
