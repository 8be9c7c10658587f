#include "platform/linux/capture/pixel_format.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

namespace quil::linux_platform {
namespace {

constexpr std::uint32_t kOpaque = 0xff000000;

constexpr bool isBigEndianMachine = std::endian::native == std::endian::big;

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

std::vector<std::uint32_t> readColours(X11Connection& connection, xcb_colormap_t map,
                                       std::uint16_t count) {
    std::vector<std::uint32_t> pixels(count);
    for (std::uint32_t i = 0; i < count; ++i) pixels[i] = i;
    const auto answer = connection.reply(
        xcb_query_colors_reply, xcb_query_colors(connection.get(), map, count, pixels.data()));
    if (!answer) return {};
    std::vector<std::uint32_t> colours;
    const xcb_rgb_t* entries = xcb_query_colors_colors(answer.get());
    for (int i = 0; i < xcb_query_colors_colors_length(answer.get()); ++i) {
        const auto channel = [](std::uint16_t value) { return std::uint32_t{value} >> 8; };
        colours.push_back(kOpaque | channel(entries[i].red) << 16 | channel(entries[i].green) << 8 |
                          channel(entries[i].blue));
    }
    return colours;
}

/// One colour's bits of a pixel, widened or narrowed to eight.
class Channel {
  public:
    Channel(std::uint32_t mask, int position) : mask_(mask), shift_(std::countr_zero(mask)) {
        const std::uint32_t maximum = mask ? mask >> shift_ : 0;
        // No server has more than 10 bits a colour; further ones are left out.
        while (maximum >> excess_ >= values_.size()) ++excess_;
        const std::uint32_t limit = maximum >> excess_;
        for (std::uint32_t value = 0; value <= limit && limit > 0; ++value) {
            values_[value] = (value * 255 + limit / 2) / limit << position;
        }
        shift_ += excess_;
    }
    std::uint32_t of(std::uint32_t pixel) const {
        return mask_ ? values_[(pixel & mask_) >> shift_] : 0;
    }

  private:
    std::uint32_t mask_;
    int shift_;
    int excess_ = 0;
    std::array<std::uint32_t, 1024> values_{};
};

std::uint32_t pixelAt(const std::uint8_t* bytes, int count, bool isBigEndian) {
    std::uint32_t pixel = 0;
    for (int i = 0; i < count; ++i) {
        pixel |= std::uint32_t{bytes[i]} << 8 * (isBigEndian ? count - 1 - i : i);
    }
    return pixel;
}

bool isUsual(const PixelFormat& format) {
    return format.bitsPerPixel == 32 && format.isBigEndian == isBigEndianMachine &&
           format.red == 0xff0000 && format.green == 0xff00 && format.blue == 0xff &&
           (format.alpha == 0 || format.alpha == kOpaque) && format.colours.empty();
}

/// A row as 0xAARRGGBB, colours still multiplied by alpha. Without alpha bits the alpha is full.
void convertRow(const std::uint8_t* row, int width, const PixelFormat& format,
                std::uint32_t* pixels) {
    static_assert(sizeof(std::uint32_t) == 4);
    const int pixelBytes = format.bitsPerPixel / 8;
    if (!format.colours.empty()) {
        for (int x = 0; x < width; ++x) {
            const std::uint32_t pixel =
                pixelAt(row + x * pixelBytes, pixelBytes, format.isBigEndian);
            pixels[x] = pixel < format.colours.size() ? format.colours[pixel] : kOpaque;
        }
        return;
    }
    if (isUsual(format)) {
        std::memcpy(pixels, row, static_cast<std::size_t>(width) * 4);
        if (format.alpha) return;
        for (int x = 0; x < width; ++x) pixels[x] |= kOpaque;
        return;
    }
    const Channel red(format.red, 16);
    const Channel green(format.green, 8);
    const Channel blue(format.blue, 0);
    const Channel alpha(format.alpha, 24);
    for (int x = 0; x < width; ++x) {
        const std::uint32_t pixel = pixelAt(row + x * pixelBytes, pixelBytes, format.isBigEndian);
        pixels[x] = (format.alpha ? alpha.of(pixel) : kOpaque) | red.of(pixel) | green.of(pixel) |
                    blue.of(pixel);
    }
}

/// Whether no colour is brighter than its alpha allows.
bool isMultiplied(const std::vector<std::uint32_t>& pixels) {
    return std::all_of(pixels.begin(), pixels.end(), [](std::uint32_t pixel) {
        const std::uint32_t alpha = pixel >> 24;
        return (pixel >> 16 & 255) <= alpha && (pixel >> 8 & 255) <= alpha &&
               (pixel & 255) <= alpha;
    });
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
                                           xcb_visualid_t visual, xcb_colormap_t colourMap) {
    const xcb_setup_t& setup = *xcb_get_setup(connection.get());
    const xcb_format_t* layout = findFormat(setup, depth);
    const xcb_visualtype_t* type = findVisual(connection.screen(), visual);
    if (!layout || !type || layout->scanline_pad == 0) return {};
    PixelFormat format;
    format.bitsPerPixel = layout->bits_per_pixel;
    format.rowPadding = layout->scanline_pad;
    format.isBigEndian = setup.image_byte_order == XCB_IMAGE_ORDER_MSB_FIRST;
    if (format.bitsPerPixel % 8 != 0 || format.bitsPerPixel == 0) return {};
    if (type->_class != XCB_VISUAL_CLASS_TRUE_COLOR &&
        type->_class != XCB_VISUAL_CLASS_DIRECT_COLOR) {
        format.colours = readColours(connection, colourMap, type->colormap_entries);
        return format.colours.empty() ? std::nullopt : std::optional(format);
    }
    format.red = type->red_mask;
    format.green = type->green_mask;
    format.blue = type->blue_mask;
    // By convention the bits of a 32-bit visual that no colour claims.
    if (depth == 32) format.alpha = ~(format.red | format.green | format.blue);
    return format;
}

Picture pictureFromImage(const std::uint8_t* image, int width, int height,
                         const PixelFormat& format) {
    Picture picture{width, height, 1, {}};
    picture.pixels.resize(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    const std::size_t rowBytes = format.rowBytes(width);
    for (int y = 0; y < height; ++y) {
        const auto row = static_cast<std::size_t>(y);
        convertRow(image + row * rowBytes, width, format,
                   picture.pixels.data() + row * static_cast<std::size_t>(width));
    }
    if (format.alpha == 0) return picture;
    if (isMultiplied(picture.pixels)) {
        std::transform(picture.pixels.begin(), picture.pixels.end(), picture.pixels.begin(),
                       divided);
    } else {
        for (std::uint32_t& pixel : picture.pixels) pixel |= kOpaque;
    }
    return picture;
}

}  // namespace quil::linux_platform
