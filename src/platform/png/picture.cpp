#include "platform/png/picture.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace quil {

bool isImageSize(std::int64_t width, std::int64_t height) {
    return width >= 1 && height >= 1 && width <= kMaximumImageSide && height <= kMaximumImageSide &&
           width * height <= kMaximumImagePixels;
}

namespace {

/// The part of the source that a pixel covers, in one direction: whole pixels, the first and the
/// last of which count in part.
struct Span {
    std::size_t first = 0;
    /// How much of each pixel is covered, in 1/256.
    std::vector<std::uint32_t> weights;
};

std::vector<Span> spansOf(int size, int sourceSize) {
    std::vector<Span> spans(static_cast<std::size_t>(size));
    for (int i = 0; i < size; ++i) {
        const double begin = static_cast<double>(i) * sourceSize / size;
        const double end = static_cast<double>(i + 1) * sourceSize / size;
        Span& span = spans[static_cast<std::size_t>(i)];
        span.first = static_cast<std::size_t>(begin);
        for (double at = std::floor(begin); at < end && at < sourceSize; ++at) {
            const double covered = std::min(end, at + 1) - std::max(begin, at);
            span.weights.push_back(static_cast<std::uint32_t>(std::lround(covered * 256)));
        }
    }
    return spans;
}

/// Sums of weighted channels. Colours count as much as they are opaque.
struct Sums {
    std::uint64_t alpha = 0, red = 0, green = 0, blue = 0, weight = 0;

    void add(std::uint32_t pixel, std::uint64_t by) {
        const std::uint64_t opacity = (pixel >> 24) * by;
        alpha += opacity;
        red += ((pixel >> 16) & 0xFF) * opacity;
        green += ((pixel >> 8) & 0xFF) * opacity;
        blue += (pixel & 0xFF) * opacity;
        weight += by;
    }

    std::uint32_t average() const {
        if (alpha == 0 || weight == 0) return 0;
        const auto channel = [&](std::uint64_t sum) {
            return static_cast<std::uint32_t>((sum + alpha / 2) / alpha);
        };
        const auto opacity = static_cast<std::uint32_t>((alpha + weight / 2) / weight);
        return opacity << 24 | channel(red) << 16 | channel(green) << 8 | channel(blue);
    }
};

Picture reduced(const Picture& picture, int width, int height) {
    Picture result{width, height, 1, {}};
    result.pixels.reserve(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    const auto columns = spansOf(width, picture.width);
    const auto sourceWidth = static_cast<std::size_t>(picture.width);
    for (const Span& rows : spansOf(height, picture.height)) {
        for (const Span& column : columns) {
            Sums sums;
            for (std::size_t y = 0; y < rows.weights.size(); ++y) {
                const std::uint32_t* row =
                    &picture.pixels[(rows.first + y) * sourceWidth + column.first];
                for (std::size_t x = 0; x < column.weights.size(); ++x) {
                    sums.add(row[x], std::uint64_t{rows.weights[y]} * column.weights[x]);
                }
            }
            result.pixels.push_back(sums.average());
        }
    }
    return result;
}

}  // namespace

Picture resized(Picture picture, std::int64_t width, std::int64_t height) {
    if (!isImageSize(picture.width, picture.height) || !isImageSize(width, height)) return {};
    const std::int64_t factor = width / picture.width;
    if (picture.scale == 1 && factor * picture.width == width &&
        factor * picture.height == height) {
        picture.scale = static_cast<int>(factor);
        return picture;
    }
    if (picture.scale == 1 && width <= picture.width && height <= picture.height) {
        return reduced(picture, static_cast<int>(width), static_cast<int>(height));
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
