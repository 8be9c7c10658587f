#include "platform/png/png_encoder.h"

#include <gtest/gtest.h>
#include <png.h>

#include <array>
#include <bit>
#include <functional>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace quil {
namespace {

using Random = std::independent_bits_engine<std::mt19937, 32, std::uint32_t>;

struct Decoded {
    int width = 0;
    int height = 0;
    std::vector<std::uint32_t> pixels;  // 0xAARRGGBB
};

/// Reads a file with a decoder that nobody here wrote.
Decoded decode(const std::string& file) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    EXPECT_TRUE(png_image_begin_read_from_memory(&image, file.data(), file.size()))
        << image.message;
    image.format = PNG_FORMAT_BGRA;
    Decoded decoded{static_cast<int>(image.width), static_cast<int>(image.height), {}};
    decoded.pixels.resize(std::size_t{image.width} * image.height);
    EXPECT_TRUE(png_image_finish_read(&image, nullptr, decoded.pixels.data(), 0, nullptr))
        << image.message;
    return decoded;
}

Picture paint(int width, int height, int scale,
              const std::function<std::uint32_t(unsigned, unsigned)>& colour) {
    Picture picture{width, height, scale, {}};
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            picture.pixels.push_back(colour(static_cast<unsigned>(x), static_cast<unsigned>(y)));
        }
    }
    return picture;
}

std::uint32_t noise(unsigned x, unsigned y) {
    return (x * 2654435761U ^ y * 40503U * 65599U) * 2246822519U;
}

/// How many pixels of the file are not those of the picture's image; all, when its size is another.
std::size_t differentPixels(const Picture& picture, const std::string& file) {
    const Decoded image = decode(file);
    if (image.width != picture.width * picture.scale ||
        image.height != picture.height * picture.scale) {
        return SIZE_MAX;
    }
    std::size_t different = 0;
    for (int y = 0; y < image.height; ++y) {
        for (int x = 0; x < image.width; ++x) {
            different += image.pixels[static_cast<std::size_t>(y * image.width + x)] !=
                         picture.pixels[static_cast<std::size_t>(y / picture.scale * picture.width +
                                                                 x / picture.scale)];
        }
    }
    return different;
}

/// Flat areas, repeated rows, words, gradients and noise, in rectangles over each other.
Picture randomPicture(Random& random) {
    const auto below = [&](unsigned limit) { return random() % limit; };
    constexpr std::array<unsigned, 8> kSides = {1, 2, 3, 5, 11, 40, 130, 700};
    const unsigned width = kSides[below(8)] + below(3);
    const unsigned height = kSides[below(7)] + below(3);
    Picture picture{
        static_cast<int>(width), static_cast<int>(height), static_cast<int>(1 + below(5)), {}};
    picture.pixels.resize(std::size_t{width} * height);
    const std::uint32_t mask =
        std::array<std::uint32_t, 5>{0x010101, 0x030303, 0xC0C0C0, 0xFFFFFF, 0xFFFFFFFF}[below(5)];
    for (unsigned shapes = 1 + below(12); shapes > 0; --shapes) {
        const unsigned left = below(width), top = below(height), kind = below(5);
        const unsigned right = left + 1 + below(width - left);
        const unsigned bottom = top + 1 + below(height - top);
        const std::uint32_t colour = random(), step = random(), period = 1 + below(40);
        for (unsigned y = top; y < bottom; ++y) {
            for (unsigned x = left; x < right; ++x) {
                const std::uint32_t values[] = {colour, random(), colour + x * step,
                                                noise(x % period, y % 9) & 0x010101 * colour,
                                                x % period ? colour : step * (y / period)};
                picture.pixels[std::size_t{y} * width + x] =
                    (values[kind] & mask) | (mask >> 24 ? 0 : 0xff000000);
            }
        }
    }
    return picture;
}

void expectKept(const Picture& picture) {
    const std::string file = encodePng(picture);
    ASSERT_EQ(differentPixels(picture, file), 0U);
    const std::set<std::uint32_t> colours(picture.pixels.begin(), picture.pixels.end());
    const auto widest = static_cast<unsigned>(std::bit_width(colours.size() - 1));
    const bool isOpaque = *colours.begin() >= 0xff000000;
    const unsigned least = !isOpaque ? 32 : widest > 8 ? 24 : std::bit_ceil(widest);
    const unsigned channels = file[25] == 6 ? 4 : file[25] == 2 ? 3 : 1;
    EXPECT_EQ(static_cast<unsigned>(file[24]) * channels, least);
}

TEST(PngEncoder, KeepsEveryPixelInAsFewBitsAsThereAreColours) {
    for (const unsigned colours : {1, 2, 3, 4, 5, 16, 17, 256, 257, 90'000}) {
        SCOPED_TRACE(colours);
        expectKept(paint(400, 700, 1, [=](unsigned x, unsigned y) {
            return 0xff000000 | (x + 400 * y) % colours * 131;
        }));
    }
    // Each half as frequent as the one before: codes would get longer than a stream allows.
    expectKept(paint(400, 700, 1, [](unsigned x, unsigned y) {
        return 0xff000000 | std::countl_zero(noise(x, y) | 1);
    }));
    for (unsigned seed = 0; seed < 300; ++seed) {
        SCOPED_TRACE(seed);
        Random random(seed);
        expectKept(randomPicture(random));
    }
}

TEST(PngEncoder, WritesLittleForWhatRepeats) {
    const auto size = [](int width, int height, auto colour) {
        return encodePng(paint(width, height, 2, colour)).size();
    };
    EXPECT_LT(size(4000, 4000, [](unsigned, unsigned) { return 0xff336699; }), 25'000U);
    EXPECT_LT(size(3, 60000, [](unsigned, unsigned) { return 0xfe336699; }), 5'000U);
    // Noise of three bytes costs what it is, whatever it is enlarged to.
    EXPECT_LT(size(400, 400, [](unsigned x, unsigned y) { return 0xff000000 | noise(x, y); }),
              4U * 400 * 400);
}

TEST(PngEncoder, RefusesWhatIsNoImage) {
    EXPECT_EQ(encodePng({}), "");
    EXPECT_EQ(encodePng({0, 4, 2, {}}), "");
    EXPECT_EQ(encodePng(Picture{1, 1, 1 << 20, {0xffffffff}}), "");
}

TEST(Picture, IsEnlargedByNearestPixelsAndReducedByAverages) {
    const Picture source = paint(2, 2, 1, [](unsigned x, unsigned y) { return 10 * y + x; });
    const Picture doubled = resized(source, 4, 4);
    EXPECT_EQ(doubled.scale, 2);
    EXPECT_EQ(doubled.pixels, source.pixels);

    const Picture uneven = resized(source, 5, 3);
    EXPECT_EQ(uneven.scale, 1);
    EXPECT_EQ(uneven.width, 5);
    EXPECT_EQ(uneven.pixels,
              (std::vector<std::uint32_t>{0, 0, 1, 1, 1, 10, 10, 11, 11, 11, 10, 10, 11, 11, 11}));
    // Three columns over two: the middle one counts by half in each. Colours count as they are
    // opaque.
    Picture wide{3, 1, 1, {0xFF000000, 0xFF0000FF, 0xFF00FF00}};
    EXPECT_EQ(resized(wide, 2, 1).pixels, (std::vector<std::uint32_t>{0xFF000055, 0xFF00AA55}));
    Picture clear{2, 2, 1, {0xFFFFFFFF, 0x00123456, 0xFF000000, 0x00123456}};
    EXPECT_EQ(resized(clear, 1, 1).pixels, std::vector<std::uint32_t>{0x80808080});
    EXPECT_EQ(resized(source, 4, 0).width, 0);
    EXPECT_EQ(resized(source, std::int64_t{1} << 40, std::int64_t{1} << 40).width, 0);
    EXPECT_EQ(resized({}, 4, 4).width, 0);
}

}  // namespace
}  // namespace quil
