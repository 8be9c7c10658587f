// The PNG encoder beside what is packaged, on pictures of windows. What only compresses our rows is
// given them: its time is without making them.
//
// usage: png_encoders [OPTION...] [PICTURE.png...]
//
// Without pictures (of one pixel per point, as maim or import take them) it makes one of a text
// editor and one of a photograph. Every encoder makes the image that a host gets: two pixels per
// point. Counters: bytes of the file.

#include <benchmark/benchmark.h>
#include <libdeflate.h>
#include <png.h>
#include <zlib.h>

#include <cmath>
#include <cstring>
#include <functional>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "platform/png/png_encoder.h"
#include "platform/png/png_rows.h"

namespace quil {
namespace {

constexpr int kScale = 2;

Picture readPicture(const char* path) {
    png_image file{};
    file.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_file(&file, path)) return {};
    file.format = PNG_FORMAT_BGRA;
    Picture picture{static_cast<int>(file.width), static_cast<int>(file.height), kScale, {}};
    picture.pixels.resize(std::size_t{file.width} * file.height);
    return png_image_finish_read(&file, nullptr, picture.pixels.data(), 0, nullptr) ? picture
                                                                                    : Picture{};
}

Picture paint(const std::function<std::uint32_t(unsigned, unsigned)>& colour) {
    Picture picture{1366, 741, kScale, {}};
    for (unsigned y = 0; y < 741; ++y) {
        for (unsigned x = 0; x < 1366; ++x) picture.pixels.push_back(0xff000000 | colour(x, y));
    }
    return picture;
}

/// Lines of words: glyphs with soft edges in two colours, repeated in no order.
std::uint32_t textColour(unsigned x, unsigned y) {
    const unsigned line = y / 18, letter = x / 9;
    const unsigned random = (line * 2654435761U ^ letter * 2246822519U) >> 7;
    const bool isInk = y % 18 > 3 && y % 18 < 15 && letter < 30 + line * 7919 % 80 && random % 6;
    if (!isInk || line % 5 == 4) return 0xf6f5f4;
    const unsigned glyph = random % 61 * 977 + x % 9 * 131 + y % 18 * 17;
    const unsigned grey = glyph * 40503 >> 5 & 0xff;
    if (grey > 0x90) return 0xf6f5f4;
    return (line % 3 ? 0x010101U : 0x010100U) * (grey & 0xe0);
}

std::uint32_t photographColour(unsigned x, unsigned y) {
    const double wave = 60 * std::sin(x / 83.0) * std::cos(y / 61.0) + 30 * std::sin(x * y / 9e3);
    const unsigned grain = (x * 2654435761U ^ y * 2246822519U) >> 30;
    const auto channel = [&](double base) { return static_cast<unsigned>(base + wave) + grain; };
    return channel(128) << 16 | channel(110) << 8 | channel(96);
}

void encodeWithQuil(benchmark::State& state, const Picture& picture) {
    std::size_t bytes = 0;
    for (auto _ : state) bytes = encodePng(picture).size();
    state.counters["bytes"] = static_cast<double>(bytes);
}

/// The filtered rows of our file, for other compressors.
std::vector<std::uint8_t> rowsOf(const Picture& picture) {
    const PngFormat format = choosePngFormat(picture);
    std::string compressed;
    RowCompressor compressor(compressed, rowUnits(picture, format));
    compressRows(picture, format, compressor);
    std::vector<std::uint8_t> rows((rowUnits(picture, format).rowBytes() + 1) *
                                   static_cast<std::size_t>(picture.height * picture.scale));
    const std::unique_ptr<libdeflate_decompressor, void (*)(libdeflate_decompressor*)> decompressor(
        libdeflate_alloc_decompressor(), libdeflate_free_decompressor);
    libdeflate_zlib_decompress(decompressor.get(), compressed.data(), compressed.size(),
                               rows.data(), rows.size(), nullptr);
    return rows;
}

/// Our rows, compressed by libdeflate.
void compressWithLibdeflate(benchmark::State& state, const Picture& picture, int level) {
    const std::unique_ptr<libdeflate_compressor, void (*)(libdeflate_compressor*)> compressor(
        libdeflate_alloc_compressor(level), libdeflate_free_compressor);
    const std::vector<std::uint8_t> rows = rowsOf(picture);
    std::size_t bytes = 0;
    for (auto _ : state) {
        const std::size_t bound = libdeflate_zlib_compress_bound(compressor.get(), rows.size());
        const auto out = std::make_unique_for_overwrite<char[]>(bound);
        bytes =
            libdeflate_zlib_compress(compressor.get(), rows.data(), rows.size(), out.get(), bound);
    }
    state.counters["bytes"] = static_cast<double>(bytes);
}

/// Our rows, compressed by zlib.
void compressWithZlib(benchmark::State& state, const Picture& picture, int level, int strategy) {
    std::vector<std::uint8_t> rows = rowsOf(picture);
    std::size_t bytes = 0;
    for (auto _ : state) {
        z_stream stream{};
        deflateInit2(&stream, level, Z_DEFLATED, 15, 9, strategy);
        const std::size_t bound = deflateBound(&stream, rows.size());
        const auto out = std::make_unique_for_overwrite<Bytef[]>(bound);
        stream.next_in = rows.data();
        stream.avail_in = static_cast<uInt>(rows.size());
        stream.next_out = out.get();
        stream.avail_out = static_cast<uInt>(bound);
        deflate(&stream, Z_FINISH);
        bytes = stream.total_out;
        deflateEnd(&stream);
    }
    state.counters["bytes"] = static_cast<double>(bytes);
}

/// Everything by libpng, from rows of colours at the full size.
void encodeWithLibpng(benchmark::State& state, const Picture& picture, int level, int filters) {
    const auto width = static_cast<std::size_t>(picture.width) * kScale;
    std::size_t bytes = 0;
    for (auto _ : state) {
        bytes = 0;
        png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
        png_infop info = png_create_info_struct(png);
        const auto count = [](png_structp writer, png_bytep, png_size_t size) {
            *static_cast<std::size_t*>(png_get_io_ptr(writer)) += size;
        };
        png_set_write_fn(png, &bytes, count, nullptr);
        png_set_IHDR(png, info, static_cast<png_uint_32>(width),
                     static_cast<png_uint_32>(picture.height * kScale), 8, PNG_COLOR_TYPE_RGB,
                     PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
        png_set_compression_level(png, level);
        png_set_filter(png, 0, filters);
        png_write_info(png, info);
        std::vector<std::uint8_t> row(width * 3);
        for (int y = 0; y < picture.height; ++y) {
            for (std::size_t x = 0; x < width; ++x) {
                const std::uint32_t pixel =
                    picture.pixels[static_cast<std::size_t>(y * picture.width) + x / kScale];
                for (unsigned c = 0; c < 3; ++c) {
                    row[3 * x + c] = static_cast<std::uint8_t>(pixel >> (16 - 8 * c));
                }
            }
            for (int i = 0; i < kScale; ++i) png_write_row(png, row.data());
        }
        png_write_end(png, nullptr);
        png_destroy_write_struct(&png, &info);
    }
    state.counters["bytes"] = static_cast<double>(bytes);
}

void registerFor(const std::string& name, const Picture& picture) {
    const auto add = [&](const std::string& encoder, auto run, auto... arguments) {
        benchmark::RegisterBenchmark((name + '/' + encoder).c_str(), [=](benchmark::State& state) {
            run(state, picture, arguments...);
        })->Unit(benchmark::kMillisecond);
    };
    add("quil", encodeWithQuil);
    for (const int level : {1, 2, 4, 5, 6, 7, 8, 9}) {
        add("rows, libdeflate " + std::to_string(level), compressWithLibdeflate, level);
    }
    for (const int level : {1, 3, 6, 9}) {
        add("rows, zlib " + std::to_string(level), compressWithZlib, level, Z_DEFAULT_STRATEGY);
    }
    add("rows, zlib run lengths", compressWithZlib, 1, Z_RLE);
    for (const int level : {1, 3, 6}) {
        const std::string encoder = "libpng " + std::to_string(level);
        add(encoder + ", no filter", encodeWithLibpng, level, PNG_FILTER_NONE);
        add(encoder + ", up", encodeWithLibpng, level, PNG_FILTER_UP);
        add(encoder + ", all filters", encodeWithLibpng, level, PNG_ALL_FILTERS);
    }
}

}  // namespace
}  // namespace quil

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (argc == 1) {
        quil::registerFor("text", quil::paint(quil::textColour));
        quil::registerFor("photograph", quil::paint(quil::photographColour));
    }
    for (int i = 1; i < argc; ++i) {
        const quil::Picture picture = quil::readPicture(argv[i]);
        if (picture.width == 0) {
            std::cerr << argv[i] << ": no PNG picture\n";
            return 1;
        }
        quil::registerFor(argv[i], picture);
    }
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
