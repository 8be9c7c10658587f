#include "platform/png/png_encoder.h"

#include <libdeflate.h>

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "platform/png/png_rows.h"
#include "platform/png/row_compressor.h"

namespace quil {
namespace {

constexpr std::string_view kSignature = "\x89PNG\r\n\x1a\n";

void appendBigEndian(std::string& bytes, std::uint32_t number) {
    for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>(number >> shift);
}

/// Begins a chunk, the data of which are to be appended; what `endChunk` wants.
std::size_t beginChunk(std::string& file, std::string_view type) {
    const std::size_t begin = file.size();
    file.append(4, '\0').append(type);
    return begin;
}

/// False when the data are too long for a chunk.
bool endChunk(std::string& file, std::size_t begin) {
    const std::size_t covered = begin + 4;
    const std::size_t length = file.size() - begin - 8;
    if (length > INT32_MAX) return false;
    for (unsigned i = 0; i < 4; ++i) file[begin + i] = static_cast<char>(length >> (24 - 8 * i));
    appendBigEndian(file, libdeflate_crc32(0, file.data() + covered, file.size() - covered));
    return true;
}

void appendChunk(std::string& file, std::string_view type, std::string_view data) {
    const std::size_t begin = beginChunk(file, type);
    file.append(data);
    endChunk(file, begin);
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

}  // namespace

std::string encodePng(const Picture& picture) {
    if (!isImageSize(std::int64_t{picture.width} * picture.scale,
                     std::int64_t{picture.height} * picture.scale)) {
        return {};
    }
    const PngFormat format = choosePngFormat(picture);
    std::string file(kSignature);
    appendChunk(file, "IHDR", header(picture, format));
    if (!format.palette.empty()) appendChunk(file, "PLTE", paletteData(format));
    const std::size_t length = beginChunk(file, "IDAT");
    RowCompressor compressor(file, rowUnits(picture, format));
    compressRows(picture, format, compressor);
    if (!endChunk(file, length)) return {};
    appendChunk(file, "IEND", {});
    return file;
}

}  // namespace quil
