#include "platform/png/png_rows.h"

#include <array>
#include <cstring>
#include <span>
#include <utility>

namespace quil {
namespace {

using Row = std::span<const std::uint32_t>;

constexpr std::uint32_t kOpaque = 0xff000000;

// Filter types of the PNG format.
constexpr std::uint8_t kFilterNone = 0;
constexpr std::uint8_t kFilterSub = 1;
constexpr std::uint8_t kFilterUp = 2;

Row rowOf(const Picture& picture, int y) {
    const auto width = static_cast<std::size_t>(picture.width);
    return Row(picture.pixels).subspan(static_cast<std::size_t>(y) * width, width);
}

/// Most rows of a window repeat the one above, which makes them free to look at and to encode.
bool repeatsRowAbove(const Picture& picture, int y) {
    if (y == 0) return false;
    const Row row = rowOf(picture, y);
    return std::memcmp(row.data(), rowOf(picture, y - 1).data(), row.size_bytes()) == 0;
}

/// A set of at most 256 colours, numbered in the order in which they came.
class Palette {
  public:
    /// The colour's number, or -1 when it is one too many.
    int indexOf(std::uint32_t colour) {
        // Open addressing; a fourth of the slots is in use at most.
        std::size_t slot = (colour * 2654435761U) >> 22;
        while (slots_[slot] != kFree && colours_[slots_[slot]] != colour) {
            slot = (slot + 1) % slots_.size();
        }
        if (slots_[slot] != kFree) return slots_[slot];
        if (colours_.size() == 256) return -1;
        slots_[slot] = static_cast<std::uint16_t>(colours_.size());
        colours_.push_back(colour);
        return slots_[slot];
    }

    const std::vector<std::uint32_t>& colours() const { return colours_; }

  private:
    static constexpr std::uint16_t kFree = 0xffff;

    static constexpr std::array<std::uint16_t, 1024> allFree() {
        std::array<std::uint16_t, 1024> slots{};
        slots.fill(kFree);
        return slots;
    }

    std::array<std::uint16_t, 1024> slots_ = allFree();
    std::vector<std::uint32_t> colours_;
};

/// Subtracts the four bytes of `b` from those of `a`, each on its own, modulo 256.
constexpr std::uint32_t bytewiseDifference(std::uint32_t a, std::uint32_t b) {
    constexpr std::uint32_t kHighBits = 0x80808080;
    return ((a | kHighBits) - (b & ~kHighBits)) ^ ((a ^ ~b) & kHighBits);
}

/// Counts the different values of rows, about: some hash alike.
class DistinctValues {
  public:
    /// Whether the row has fewer different steps from pixel to pixel than it has different pixels.
    bool haveFewerDifferences(Row row) {
        ++round_;
        int colours = 0, differences = 0;
        std::uint32_t left = ~row.front();
        for (const std::uint32_t pixel : row) {
            if (pixel == left) continue;
            colours += isNew(colours_, pixel);
            differences += isNew(differences_, bytewiseDifference(pixel, left));
            left = pixel;
        }
        return differences < colours;
    }

  private:
    using Rounds = std::array<std::uint32_t, 4096>;

    bool isNew(Rounds& seen, std::uint32_t value) const {
        return std::exchange(seen[(value * 2654435761U) >> 20], round_) != round_;
    }

    std::uint32_t round_ = 0;
    Rounds colours_{}, differences_{};
};

/// Filters rows one after the other.
class RowFilter {
  public:
    RowFilter(const Picture& picture, const PngFormat& format, RowCompressor& compressor)
        : picture_(picture),
          format_(format),
          compressor_(compressor),
          values_(rowUnits(picture, format).count) {
        for (const std::uint32_t colour : format.palette) palette_.indexOf(colour);
    }

    void run() {
        const auto scale = static_cast<std::size_t>(picture_.scale);
        std::size_t equalRows = 0;
        for (int y = 0; y < picture_.height; ++y) {
            if (repeatsRowAbove(picture_, y)) {
                equalRows += scale;
                continue;
            }
            if (equalRows > 0) compressor_.addRowsOfZeros(kFilterUp, equalRows);
            if (format_.colourType != kPngPalette) {
                addColours(y);
            } else if (format_.bitDepth == 8) {
                addIndices(rowOf(picture_, y));
            } else {
                addPackedIndices(rowOf(picture_, y));
            }
            equalRows = scale - 1;
        }
        if (equalRows > 0) compressor_.addRowsOfZeros(kFilterUp, equalRows);
    }

  private:
    void addIndices(Row row) {
        std::uint32_t lastColour = row.front();
        auto index = static_cast<std::uint32_t>(palette_.indexOf(lastColour));
        for (std::size_t x = 0; x < row.size(); ++x) {
            if (row[x] != lastColour) {
                lastColour = row[x];
                index = static_cast<std::uint32_t>(palette_.indexOf(lastColour));
            }
            values_[x] = index;
        }
        compressor_.addRow(kFilterNone, values_, UnitFiller::kItself);
    }

    void addPackedIndices(Row row) {
        auto out = values_.begin();
        unsigned pending = 1;  // a leading one bit, then the bits that wait for their byte
        const auto append = [&](unsigned bits, unsigned count) {
            pending = pending << count | bits;
            if (pending < 256) return;
            *out++ = pending & 0xff;
            pending = 1;
        };
        // The pixels that one becomes, as far as they fill no more than a byte, evenly.
        const unsigned pixelBits = format_.bitDepth * static_cast<unsigned>(picture_.scale);
        const bool areTogether = pixelBits <= 8 && 8 % pixelBits == 0;
        std::uint32_t lastColour = ~row.front();
        unsigned index = 0;
        unsigned together = 0;
        for (const std::uint32_t pixel : row) {
            if (pixel != lastColour) {
                lastColour = pixel;
                index = static_cast<unsigned>(palette_.indexOf(pixel));
                together = 0;
                for (int i = 0; i < picture_.scale && areTogether; ++i) {
                    together = together << format_.bitDepth | index;
                }
            }
            if (areTogether) {
                append(together, pixelBits);
            } else {
                for (int i = 0; i < picture_.scale; ++i) append(index, format_.bitDepth);
            }
        }
        while (pending != 1) append(0, 1);
        compressor_.addRow(kFilterNone, values_, UnitFiller::kItself);
    }

    /// Text repeats whole pixels, gradients and photographs repeat differences: whichever of the
    /// two gives fewer different values also gives the compressor more to find.
    void addColours(int y) {
        const Row row = rowOf(picture_, y);
        if (distinct_.haveFewerDifferences(row)) {
            std::uint32_t left = 0;
            for (std::size_t x = 0; x < row.size(); ++x) {
                values_[x] = ordered(bytewiseDifference(row[x], left));
                left = row[x];
            }
            compressor_.addRow(kFilterSub, values_, UnitFiller::kZeros);
            return;
        }
        for (std::size_t x = 0; x < row.size(); ++x) values_[x] = ordered(row[x]);
        compressor_.addRow(kFilterNone, values_, UnitFiller::kItself);
    }

    /// The channels in the order of the file, the first one lowest.
    std::uint32_t ordered(std::uint32_t pixel) const {
        const std::uint32_t colours =
            (pixel >> 16 & 0xff) | (pixel & 0xff00) | (pixel & 0xff) << 16;
        return format_.colourType == kPngTrueColourAlpha ? colours | (pixel & kOpaque) : colours;
    }

    const Picture& picture_;
    const PngFormat& format_;
    RowCompressor& compressor_;
    std::vector<std::uint32_t> values_;
    DistinctValues distinct_;
    Palette palette_;
};

std::uint8_t bitsForColours(std::size_t colours) {
    return static_cast<std::uint8_t>(colours > 16 ? 8 : colours > 4 ? 4 : colours > 2 ? 2 : 1);
}

}  // namespace

std::int64_t PngFormat::rowBytes(std::int64_t pixels) const {
    const int channels = colourType == kPngTrueColourAlpha ? 4 : colourType == kPngPalette ? 1 : 3;
    return (pixels * channels * bitDepth + 7) / 8;
}

PngFormat choosePngFormat(const Picture& picture) {
    Palette palette;
    bool opaque = true;
    bool fewColours = true;
    for (int y = 0; y < picture.height && (opaque || fewColours); ++y) {
        if (repeatsRowAbove(picture, y)) continue;
        const Row row = rowOf(picture, y);
        std::uint32_t alpha = kOpaque;
        for (const std::uint32_t pixel : row) alpha &= pixel;
        opaque = opaque && alpha == kOpaque;
        std::uint32_t lastColour = ~row.front();
        for (std::size_t x = 0; x < row.size() && fewColours; ++x) {
            if (row[x] == lastColour) continue;
            lastColour = row[x];
            fewColours = palette.indexOf(lastColour) >= 0;
        }
    }
    if (!opaque) return {kPngTrueColourAlpha, 8, {}};
    if (!fewColours) return {};
    return {kPngPalette, bitsForColours(palette.colours().size()), palette.colours()};
}

RowUnits rowUnits(const Picture& picture, const PngFormat& format) {
    const auto scale = static_cast<unsigned>(picture.scale);
    if (format.bitDepth < 8) {
        return {
            1, 1,
            static_cast<std::size_t>(format.rowBytes(std::int64_t{picture.width} * picture.scale))};
    }
    const auto valueBytes = static_cast<unsigned>(format.rowBytes(1));
    return {valueBytes, valueBytes * scale, static_cast<std::size_t>(picture.width)};
}

void compressRows(const Picture& picture, const PngFormat& format, RowCompressor& compressor) {
    RowFilter(picture, format, compressor).run();
    compressor.finish();
}

}  // namespace quil
