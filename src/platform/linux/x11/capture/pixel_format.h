#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "platform/linux/x11/connection.h"
#include "platform/png/picture.h"

namespace quil::linux_platform {

/// How the pixels of a window's image are stored.
struct PixelFormat {
    /// 8, 16, 24 or 32.
    int bitsPerPixel = 32;
    /// Rows begin at multiples of so many bits.
    int rowPadding = 32;
    bool isBigEndian = false;
    /// Which bits of a pixel are which colour. Alpha is 0 for opaque windows; colours are
    /// multiplied by it.
    std::uint32_t red = 0xff0000;
    std::uint32_t green = 0xff00;
    std::uint32_t blue = 0xff;
    std::uint32_t alpha = 0;

    std::size_t rowBytes(int width) const;
};

/// The format of images of windows with that depth and visual. Nothing when pixels are entries of a
/// colour map (no server keeps the content of such windows), or are stored in an unknown way.
std::optional<PixelFormat> readPixelFormat(X11Connection& connection, std::uint8_t depth,
                                           xcb_visualid_t visual);

/// The picture that an image of that size shows. A transparent window's picture has its colours
/// not multiplied by alpha; a window that leaves the alpha bits to chance gives an opaque one.
Picture pictureFromImage(const std::uint8_t* image, int width, int height,
                         const PixelFormat& format);

}  // namespace quil::linux_platform
