#pragma once

#include <cstdint>
#include <vector>

#include "platform/png/picture.h"
#include "platform/png/row_compressor.h"

namespace quil {

/// Colour types of the PNG format.
inline constexpr std::uint8_t kPngTrueColour = 2;
inline constexpr std::uint8_t kPngPalette = 3;
inline constexpr std::uint8_t kPngTrueColourAlpha = 6;

/// How the pixels of an image are written.
struct PngFormat {
    std::uint8_t colourType = kPngTrueColour;
    /// Bits per channel, or per palette index.
    std::uint8_t bitDepth = 8;
    /// 0xAARRGGBB by index; empty unless the colour type is a palette.
    std::vector<std::uint32_t> palette;

    /// Bytes of a row of that many pixels, without its filter byte.
    std::int64_t rowBytes(std::int64_t pixels) const;
};

/// The most compact format that keeps every pixel.
PngFormat choosePngFormat(const Picture& picture);

/// The units that the rows of the picture's image consist of.
RowUnits rowUnits(const Picture& picture, const PngFormat& format);

/// Filters the rows of the picture's image, and compresses them.
void compressRows(const Picture& picture, const PngFormat& format, RowCompressor& compressor);

}  // namespace quil
