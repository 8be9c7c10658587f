#include "platform/png/png_rows.h"

#include <array>
#include <cstring>
#include <span>

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

/// Counts the different values of a row, about: some hash alike. Cheap enough to do it twice a row.
class DistinctValues {
  public:
    int count(Row values) {
        ++round_;
        int distinct = 0;
        for (const std::uint32_t value : values) {
            std::uint32_t& seen = seenInRound_[(value * 2654435761U) >> 20];
            distinct += seen != round_;
            seen = round_;
        }
        return distinct;
    }

  private:
    std::uint32_t round_ = 0;
    std::array<std::uint32_t, 4096> seenInRound_{};
};

/// Subtracts the four bytes of `b` from those of `a`, each on its own, modulo 256.
constexpr std::uint32_t bytewiseDifference(std::uint32_t a, std::uint32_t b) {
    constexpr std::uint32_t kHighBits = 0x80808080;
    return ((a | kHighBits) - (b & ~kHighBits)) ^ ((a ^ ~b) & kHighBits);
}

/// Writes rows one after the other.
class RowWriter {
  public:
    RowWriter(const Picture& picture, const PngFormat& format)
        : picture_(picture),
          format_(format),
          rowBytes_(static_cast<std::size_t>(
              format.rowBytes(std::int64_t{picture.width} * picture.scale))),
          differences_(static_cast<std::size_t>(picture.width)) {
        for (const std::uint32_t colour : format.palette) palette_.indexOf(colour);
    }

    PngRows write() {
        PngRows rows;
        rows.size = (rowBytes_ + 1) * static_cast<std::size_t>(picture_.height) *
                    static_cast<std::size_t>(picture_.scale);
        rows.bytes = makeLargeBuffer(rows.size);
        out_ = rows.bytes.get();
        for (int y = 0; y < picture_.height; ++y) {
            int repetitions = picture_.scale;
            if (!repeatsRowAbove(picture_, y)) {
                if (format_.colourType == kPngPalette) {
                    writeIndices(rowOf(picture_, y));
                } else {
                    writeColours(rowOf(picture_, y));
                }
                --repetitions;
            }
            writeRepetitions(repetitions);
        }
        return rows;
    }

  private:
    /// The difference to an equal row is nothing but zeros, which compress best.
    void writeRepetitions(int rows) {
        for (; rows > 0; --rows) {
            *out_++ = kFilterUp;
            std::memset(out_, 0, rowBytes_);
            out_ += rowBytes_;
        }
    }

    void writeIndices(Row row) {
        *out_++ = kFilterNone;
        unsigned pending = 1;  // a leading one bit, then the bits that wait for their byte
        std::uint32_t lastColour = row.front();
        auto index = static_cast<unsigned>(palette_.indexOf(lastColour));
        for (const std::uint32_t pixel : row) {
            if (pixel != lastColour) {
                lastColour = pixel;
                index = static_cast<unsigned>(palette_.indexOf(pixel));
            }
            for (int i = 0; i < picture_.scale; ++i) {
                pending = pending << format_.bitDepth | index;
                if (pending >= 256) {
                    *out_++ = static_cast<std::uint8_t>(pending);
                    pending = 1;
                }
            }
        }
        if (pending != 1) {
            while (pending < 256) pending <<= 1;
            *out_++ = static_cast<std::uint8_t>(pending);
        }
    }

    void writeColours(Row row) {
        // Text repeats whole pixels, gradients and photographs repeat differences: whichever of the
        // two gives fewer different values also gives the compressor more to find.
        std::uint32_t left = 0;
        for (std::size_t x = 0; x < row.size(); ++x) {
            differences_[x] = bytewiseDifference(row[x], left);
            left = row[x];
        }
        const bool useDifferences =
            distinctValues_.count(differences_) < distinctValues_.count(row);
        *out_++ = useDifferences ? kFilterSub : kFilterNone;
        const bool alpha = format_.colourType == kPngTrueColourAlpha;
        for (const std::uint32_t value : useDifferences ? Row(differences_) : row) {
            writeValue(value, alpha);
            for (int i = 1; i < picture_.scale; ++i) writeValue(useDifferences ? 0 : value, alpha);
        }
    }

    void writeValue(std::uint32_t value, bool alpha) {
        out_[0] = static_cast<std::uint8_t>(value >> 16);
        out_[1] = static_cast<std::uint8_t>(value >> 8);
        out_[2] = static_cast<std::uint8_t>(value);
        if (alpha) out_[3] = static_cast<std::uint8_t>(value >> 24);
        out_ += alpha ? 4 : 3;
    }

    const Picture& picture_;
    const PngFormat& format_;
    const std::size_t rowBytes_;
    std::vector<std::uint32_t> differences_;
    DistinctValues distinctValues_;
    Palette palette_;
    std::uint8_t* out_ = nullptr;
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

PngRows filteredRows(const Picture& picture, const PngFormat& format) {
    return RowWriter(picture, format).write();
}

}  // namespace quil
