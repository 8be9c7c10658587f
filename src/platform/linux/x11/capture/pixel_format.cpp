#include "platform/linux/x11/capture/pixel_format.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

namespace quil::linux_platform {
namespace {

constexpr std::uint32_t kOpaque = 0xff000000;

const xcb_visualtype_t* findVisual(const xcb_screen_t& screen, xcb_visualid_t id) {
    for (auto depths = xcb_screen_allowed_depths_iterator(&screen); depths.rem > 0;
         xcb_depth_next(&depths)) {
        for (auto visuals = xcb_depth_visuals_iterator(depths.data); visuals.rem > 0;
             xcb_visualtype_next(&visuals)) {
            if (visuals.data->visual_id == id) return visuals.data;
        }
    }
    return nullptr;
}

const xcb_format_t* findFormat(const xcb_setup_t& setup, std::uint8_t depth) {
    for (auto formats = xcb_setup_pixmap_formats_iterator(&setup); formats.rem > 0;
         xcb_format_next(&formats)) {
        if (formats.data->depth == depth) return formats.data;
    }
    return nullptr;
}

/// One channel's bits of a pixel, widened or narrowed to eight.
class Channel {
  public:
    /// `shift` is where the eight bits go in the result.
    Channel(std::uint32_t mask, int shift) : mask_(mask) {
        if (mask == 0) return;
        const int bits = std::popcount(mask);
        // Further bits than the table is for make no difference to eight.
        const int excess = std::max(0, bits - kTableBits);
        shift_ = std::countr_zero(mask) + excess;
        const std::uint32_t limit = (1U << (bits - excess)) - 1;
        for (std::uint32_t value = 0; value <= limit; ++value) {
            table_[value] = (value * 255 + limit / 2) / limit << shift;
        }
    }
    std::uint32_t of(std::uint32_t pixel) const { return table_[(pixel & mask_) >> shift_]; }

  private:
    static constexpr int kTableBits = 10;
    std::uint32_t mask_;
    int shift_ = 0;
    std::array<std::uint32_t, 1 << kTableBits> table_{};
};

/// Reads rows as 0xAARRGGBB, their colours still multiplied by alpha.
class RowReader {
  public:
    explicit RowReader(const PixelFormat& format)
        : format_(format),
          isCopy_(format.bitsPerPixel == 32 &&
                  format.isBigEndian == (std::endian::native == std::endian::big) &&
                  format.red == 0xff0000 && format.green == 0xff00 && format.blue == 0xff),
          implied_(format.alpha ? 0 : kOpaque) {}

    void read(const std::uint8_t* row, int width, std::uint32_t* pixels) const {
        if (isCopy_) {
            std::memcpy(pixels, row, static_cast<std::size_t>(width) * sizeof *pixels);
            for (int x = 0; x < width; ++x) pixels[x] |= implied_;
            return;
        }
        const int bytes = format_.bitsPerPixel / 8;
        for (int x = 0; x < width; ++x, row += bytes) {
            std::uint32_t pixel = 0;
            for (int i = 0; i < bytes; ++i) {
                pixel |= std::uint32_t{row[format_.isBigEndian ? bytes - 1 - i : i]} << 8 * i;
            }
            pixels[x] =
                implied_ | red_.of(pixel) | green_.of(pixel) | blue_.of(pixel) | alpha_.of(pixel);
        }
    }

  private:
    const PixelFormat& format_;
    const bool isCopy_;
    const std::uint32_t implied_;
    const Channel red_{format_.red, 16};
    const Channel green_{format_.green, 8};
    const Channel blue_{format_.blue, 0};
    const Channel alpha_{format_.alpha, 24};
};

/// Whether no colour is brighter than its alpha allows.
bool isMultiplied(std::uint32_t pixel) {
    const std::uint32_t alpha = pixel >> 24;
    return (pixel >> 16 & 255) <= alpha && (pixel >> 8 & 255) <= alpha && (pixel & 255) <= alpha;
}

std::uint32_t divided(std::uint32_t pixel) {
    const std::uint32_t alpha = pixel >> 24;
    if (alpha == 255) return pixel;
    if (alpha == 0) return 0;
    const auto channel = [&](int shift) {
        return ((pixel >> shift & 255) * 255 + alpha / 2) / alpha << shift;
    };
    return alpha << 24 | channel(16) | channel(8) | channel(0);
}

}  // namespace

std::size_t PixelFormat::rowBytes(int width) const {
    const int bits = width * bitsPerPixel;
    return static_cast<std::size_t>((bits + rowPadding - 1) / rowPadding * rowPadding / 8);
}

std::optional<PixelFormat> readPixelFormat(X11Connection& connection, std::uint8_t depth,
                                           xcb_visualid_t visual) {
    const xcb_setup_t& setup = *xcb_get_setup(connection.get());
    const xcb_format_t* layout = findFormat(setup, depth);
    const xcb_visualtype_t* type = findVisual(connection.screen(), visual);
    if (!layout || !type || (type->red_mask | type->green_mask | type->blue_mask) == 0) return {};
    if (layout->bits_per_pixel % 8 != 0 || layout->scanline_pad % 8 != 0) return {};
    if (layout->bits_per_pixel == 0 || layout->scanline_pad == 0) return {};
    PixelFormat format{layout->bits_per_pixel,
                       layout->scanline_pad,
                       setup.image_byte_order == XCB_IMAGE_ORDER_MSB_FIRST,
                       type->red_mask,
                       type->green_mask,
                       type->blue_mask,
                       0};
    // By convention the bits of a 32-bit visual that no colour claims.
    if (depth == 32) format.alpha = ~(format.red | format.green | format.blue);
    return format;
}

Picture pictureFromImage(const std::uint8_t* image, int width, int height,
                         const PixelFormat& format) {
    const auto columns = static_cast<std::size_t>(width);
    Picture picture{width, height, 1, {}};
    picture.pixels.resize(columns * static_cast<std::size_t>(height));
    const RowReader reader(format);
    for (std::size_t y = 0; y < static_cast<std::size_t>(height); ++y) {
        reader.read(image + y * format.rowBytes(width), width, &picture.pixels[y * columns]);
    }
    if (format.alpha == 0) return picture;
    if (std::all_of(picture.pixels.begin(), picture.pixels.end(), isMultiplied)) {
        for (std::uint32_t& pixel : picture.pixels) pixel = divided(pixel);
    } else {
        for (std::uint32_t& pixel : picture.pixels) pixel |= kOpaque;
    }
    return picture;
}

}  // namespace quil::linux_platform
