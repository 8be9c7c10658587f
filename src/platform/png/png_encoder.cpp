#include "platform/png/png_encoder.h"

#include <libdeflate.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

#include "platform/png/png_rows.h"

namespace quil {
namespace {

/// Lower levels are no faster on windows full of text, where most of the time goes into reading
/// runs of one byte. Higher ones take a third longer on photographs to save three bytes in a
/// hundred. `bench/png_encoders.cpp` has the figures.
constexpr int kCompressionLevel = 5;

constexpr std::string_view kSignature = "\x89PNG\r\n\x1a\n";

void appendBigEndian(std::string& bytes, std::uint32_t number) {
    for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>(number >> shift);
}

void appendChunk(std::string& file, std::string_view type, std::string_view data) {
    appendBigEndian(file, static_cast<std::uint32_t>(data.size()));
    const std::size_t covered = file.size();
    file.append(type).append(data);
    appendBigEndian(file, libdeflate_crc32(0, file.data() + covered, file.size() - covered));
}

std::string header(const Picture& picture, const PngFormat& format) {
    std::string data;
    appendBigEndian(data, static_cast<std::uint32_t>(picture.width * picture.scale));
    appendBigEndian(data, static_cast<std::uint32_t>(picture.height * picture.scale));
    data += static_cast<char>(format.bitDepth);
    data += static_cast<char>(format.colourType);
    data.append(3, '\0');  // deflate, the standard filters, not interlaced
    return data;
}

std::string paletteData(const PngFormat& format) {
    std::string data;
    for (const std::uint32_t colour : format.palette) {
        for (int shift = 16; shift >= 0; shift -= 8) data += static_cast<char>(colour >> shift);
    }
    return data;
}

struct CompressorDeleter {
    void operator()(libdeflate_compressor* compressor) const {
        libdeflate_free_compressor(compressor);
    }
};

}  // namespace

std::string encodePng(const Picture& picture) {
    if (!isImageSize(std::int64_t{picture.width} * picture.scale,
                     std::int64_t{picture.height} * picture.scale)) {
        return {};
    }
    const std::unique_ptr<libdeflate_compressor, CompressorDeleter> compressor(
        libdeflate_alloc_compressor(kCompressionLevel));
    if (!compressor) return {};

    const PngFormat format = choosePngFormat(picture);
    const PngRows rows = filteredRows(picture, format);
    // Left uninitialised: of the worst case that this allows for, only the first pages get used.
    const std::size_t bound = libdeflate_zlib_compress_bound(compressor.get(), rows.size);
    const auto compressed = std::make_unique_for_overwrite<char[]>(bound);
    const std::size_t size = libdeflate_zlib_compress(compressor.get(), rows.bytes.get(), rows.size,
                                                      compressed.get(), bound);
    if (size == 0 || size > INT32_MAX) return {};

    std::string file(kSignature);
    file.reserve(size + 1024);
    appendChunk(file, "IHDR", header(picture, format));
    if (!format.palette.empty()) appendChunk(file, "PLTE", paletteData(format));
    appendChunk(file, "IDAT", {compressed.get(), size});
    appendChunk(file, "IEND", {});
    return file;
}

}  // namespace quil
