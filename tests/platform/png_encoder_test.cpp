#include "platform/png/png_encoder.h"

#include <gtest/gtest.h>
#include <png.h>

#include <functional>
#include <string>
#include <vector>

namespace quil {
namespace {

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

TEST(PngEncoder, KeepsEveryPixelInEveryFormat) {
    constexpr std::uint32_t kOpaque = 0xff000000;
    struct Case {
        const char* name;
        int bitsPerPixel;
        std::function<std::uint32_t(unsigned, unsigned)> colour;
    };
    const std::vector<Case> cases = {
        {"one colour", 1, [](unsigned, unsigned) { return 0xff336699; }},
        {"two colours", 1, [](unsigned x, unsigned y) { return kOpaque | (x * y % 7 ? 0 : 255); }},
        {"four colours", 2, [](unsigned x, unsigned y) { return kOpaque | (x + y) % 4 * 70; }},
        {"sixteen colours", 4, [](unsigned x, unsigned y) { return kOpaque | (x ^ y) % 16 << 9; }},
        {"256 colours", 8,
         [](unsigned x, unsigned y) { return kOpaque | (x + 9 * y) % 256 << 16; }},
        {"257 colours", 24, [](unsigned x, unsigned y) { return kOpaque | (x + 9 * y) % 257; }},
        {"gradient", 24, [](unsigned x, unsigned y) { return kOpaque | x * 131 | y << 16; }},
        {"noise", 24, [](unsigned x, unsigned y) { return kOpaque | noise(x, y); }},
        {"repeated rows", 24, [](unsigned x, unsigned y) { return kOpaque | noise(x, y / 5); }},
        {"one pixel not opaque", 32,
         [](unsigned x, unsigned y) { return x == 3 && y == 6 ? 0xfe0000ff : kOpaque; }},
        {"all alphas", 32, [](unsigned x, unsigned y) { return noise(x, y); }},
    };
    for (const Case& testCase : cases) {
        for (const auto [width, height, scale] :
             {std::array{301, 37, 1}, std::array{300, 40, 2}, std::array{299, 21, 3}}) {
            SCOPED_TRACE(std::string(testCase.name) + " x " + std::to_string(scale));
            const Picture picture = paint(width, height, scale, testCase.colour);
            const std::string file = encodePng(picture);
            ASSERT_GT(file.size(), 26U);
            const int channels = file[25] == 6 ? 4 : file[25] == 2 ? 3 : 1;
            EXPECT_EQ(file[24] * channels, testCase.bitsPerPixel);

            const Decoded image = decode(file);
            ASSERT_EQ(image.width, width * scale);
            ASSERT_EQ(image.height, height * scale);
            std::size_t different = 0;
            for (int y = 0; y < image.height; ++y) {
                for (int x = 0; x < image.width; ++x) {
                    different +=
                        image.pixels[static_cast<std::size_t>(y * image.width + x)] !=
                        picture.pixels[static_cast<std::size_t>(y / scale * width + x / scale)];
                }
            }
            EXPECT_EQ(different, 0U);
        }
    }
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
