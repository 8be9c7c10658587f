#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "platform/png/deflate_stream.h"

namespace quil {

/// What the rows of an image consist of: units, each a value of a few bytes, and after it as many
/// bytes as follow from it. A unit is a pixel of the picture with its enlargement; or one byte of
/// pixels that are smaller.
struct RowUnits {
    /// 1, 3 or 4.
    unsigned valueBytes = 1;
    /// Bytes of the whole unit: a multiple of `valueBytes`.
    unsigned bytes = 1;
    /// Units of a row, at least one.
    std::size_t count = 1;

    std::size_t rowBytes() const { return count * bytes; }
};

/// What fills a unit up behind its value.
enum class UnitFiller { kItself, kZeros };

/// Compresses filtered rows into a zlib stream (RFC 1950). It looks for repetitions among units
/// instead of bytes, and never at rows that repeat others: at two pixels per point, that is an
/// eighth of the bytes of pixels in three channels.
class RowCompressor {
  public:
    /// Appends to `out`, which must outlive this.
    RowCompressor(std::string& out, const RowUnits& units);

    /// A row of that filter type. Of a unit's value, the first byte is the lowest.
    void addRow(std::uint8_t filter, std::span<const std::uint32_t> values, UnitFiller filler);
    /// So many rows of zeros, of that filter type.
    void addRowsOfZeros(std::uint8_t filter, std::size_t count);
    /// Ends the stream.
    void finish();

  private:
    /// Where something was seen: the number of its first unit, and of that unit's first byte.
    struct Position {
        std::uint32_t unit = 0;
        std::uint32_t byte = 0;
    };
    struct Match {
        std::size_t units = 0;
        /// In bytes.
        std::size_t distance = 0;
        /// About how many bits it saves.
        int gain = 0;
    };
    static constexpr std::size_t kHashBits = 12;
    static constexpr std::size_t kCandidates = 2;

    /// The latest positions of what hashes alike: of as few units as can be repeated, and of more.
    struct Seen {
        std::array<Position, std::size_t{1} << kHashBits> few;
        std::array<std::array<Position, kCandidates>, std::size_t{1} << kHashBits> more;
    };

    void startRow(std::span<const std::uint32_t> values, UnitFiller filler);
    void updateChecksum(std::uint8_t filter, std::span<const std::uint32_t> values);
    /// The end of a run that begins at the unit and is worth no search; the unit itself if none is.
    std::size_t writeRun(std::size_t unit);
    void writeUnit(std::uint32_t value);
    void writeZeros();
    Match findMatch(std::size_t unit) const;
    void consider(Match& best, std::size_t unit, Position candidate) const;
    void remember(std::size_t unit);
    std::size_t hash(std::size_t unit, std::size_t units) const;
    Seen& seen() { return seen_[filler_ == UnitFiller::kZeros]; }
    const Seen& seen() const { return seen_[filler_ == UnitFiller::kZeros]; }
    Position position(std::size_t unit) const;

    std::string& out_;
    const RowUnits units_;
    const std::size_t fewUnits_;
    const std::size_t moreUnits_;
    /// What a unit costs, about.
    const int unitBits_;
    DeflateStream stream_;
    std::uint32_t checksum_ = 1;

    /// Rows that matches can reach, and the present one.
    std::vector<std::uint32_t> history_;
    const std::size_t rowsInReach_;
    /// The number of the first unit in `history_`.
    std::uint32_t firstUnit_ = 0;
    /// Rows that are filled up in one way repeat nothing of those that are in the other.
    std::vector<Seen> seen_;
    UnitFiller filler_ = UnitFiller::kItself;
    /// The row's units in `history_`, and where its first one is among the bytes.
    std::size_t rowBegin_ = 0;
    std::size_t rowEnd_ = 0;
    std::size_t rowByte_ = 0;
    /// The same of the row above; 0 when it can't be repeated.
    std::size_t rowAboveByte_ = 0;
    std::size_t nextRowByte_;
    std::vector<std::uint8_t> rowBytes_;
    /// Zeros that are not yet written, as more may follow.
    std::size_t zeros_ = 0;
};

}  // namespace quil
