#include "platform/png/row_compressor.h"

#include <libdeflate.h>

#include <algorithm>
#include <bit>
#include <utility>

#include "platform/png/little_endian.h"

namespace quil {
namespace {

/// A run of so many units is taken as it is: no match would be much better.
constexpr std::size_t kLongRun = 12;
/// Of longer matches, the rest is not remembered.
constexpr std::size_t kRememberedUnits = 32;
/// After so many units without a match, only each fourth one is looked for.
constexpr unsigned kManyMisses = 64;
/// Shorter rows of zeros are repeated as a whole. Long ones repeat the byte before, as short
/// distances have the shortest codes.
constexpr std::size_t kShortRow = 512;
constexpr std::uint32_t kAdlerModulus = 65521;

std::uint32_t adlerAfterZeros(std::uint32_t adler, std::size_t count) {
    const std::uint32_t low = adler & 0xffff;
    const std::uint64_t high = (adler >> 16) + low * std::uint64_t{count % kAdlerModulus};
    return static_cast<std::uint32_t>(high % kAdlerModulus) << 16 | low;
}

/// How many values are equal from the first on, at most so many.
std::size_t countEqual(const std::uint32_t* a, const std::uint32_t* b, std::size_t most) {
    std::size_t count = 0;
    while (count + 4 <= most &&
           ((a[count] ^ b[count]) | (a[count + 1] ^ b[count + 1]) | (a[count + 2] ^ b[count + 2]) |
            (a[count + 3] ^ b[count + 3])) == 0) {
        count += 4;
    }
    while (count < most && a[count] == b[count]) ++count;
    return count;
}

/// As few units as a match may have, and as many as make a match at any distance worth while.
std::size_t fewUnits(const RowUnits& units) {
    return (DeflateStream::kMinimumMatch + units.bytes - 1) / units.bytes;
}
std::size_t moreUnits(const RowUnits& units) {
    return units.bytes > 2 ? 2 : units.bytes == 2 ? 3 : 6;
}

/// Measured: indices of palettes have shorter codes than channels.
int unitBits(const RowUnits& units) {
    const int filler = units.bytes > units.valueBytes ? 3 : 0;
    return filler + (units.valueBytes == 1 ? 6 : 7 * static_cast<int>(units.valueBytes));
}

}  // namespace

RowCompressor::RowCompressor(std::string& out, const RowUnits& units)
    : out_(out),
      units_(units),
      fewUnits_(fewUnits(units)),
      moreUnits_(moreUnits(units)),
      unitBits_(unitBits(units)),
      stream_(out),
      rowsInReach_(DeflateStream::kWindow / (units.rowBytes() + 1) + 1),
      seen_(2),
      nextRowByte_(2 * DeflateStream::kWindow),  // out of reach of the positions in `seen_`
      rowBytes_(units.rowBytes() + sizeof(std::uint64_t)) {
    out_ += "\x78\x5e";  // a window of 32 KiB
    history_.reserve((2 * rowsInReach_ + 16) * units.count);
}

void RowCompressor::addRow(std::uint8_t filter, std::span<const std::uint32_t> values,
                           UnitFiller filler) {
    startRow(values, filler);
    updateChecksum(filter, values);
    stream_.literal(filter);
    unsigned misses = 0;
    for (std::size_t unit = rowBegin_; unit < rowEnd_;) {
        if (const std::size_t end = writeRun(unit); end != unit) {
            unit = end;
            continue;
        }
        Match match;
        if (misses < kManyMisses || unit % 4 == 0) {
            match = findMatch(unit);
            remember(unit);
        }
        if (match.gain <= 0) {
            ++misses;
            writeUnit(history_[unit++]);
            continue;
        }
        misses = 0;
        writeZeros();
        stream_.match(match.units * units_.bytes, match.distance);
        const std::size_t end = unit + match.units;
        for (std::size_t i = 1; i < std::min(match.units, kRememberedUnits); ++i) {
            remember(unit + i);
        }
        unit = end;
    }
    writeZeros();
}

void RowCompressor::addRowsOfZeros(std::uint8_t filter, std::size_t count) {
    const std::size_t length = 1 + units_.rowBytes();
    nextRowByte_ += count * length;
    for (std::size_t i = 0; i < count; ++i) {
        checksum_ = libdeflate_adler32(checksum_, &filter, 1);
        checksum_ = adlerAfterZeros(checksum_, units_.rowBytes());
    }
    const std::size_t repeated = length < kShortRow ? (count - 1) * length : 0;
    const bool canRepeat = repeated >= DeflateStream::kMinimumMatch;
    for (std::size_t i = 0; i < (canRepeat ? 1 : count); ++i) {
        stream_.literal(filter);
        zeros_ = units_.rowBytes();
        writeZeros();
    }
    if (canRepeat) stream_.match(repeated, length);
}

void RowCompressor::finish() {
    stream_.finish();
    for (int shift = 24; shift >= 0; shift -= 8) out_ += static_cast<char>(checksum_ >> shift);
}

void RowCompressor::startRow(std::span<const std::uint32_t> values, UnitFiller filler) {
    if (history_.size() + units_.count > history_.capacity()) {
        const std::size_t dropped = history_.size() - rowsInReach_ * units_.count;
        history_.erase(history_.begin(), history_.begin() + static_cast<std::ptrdiff_t>(dropped));
        firstUnit_ += static_cast<std::uint32_t>(dropped);
    }
    rowAboveByte_ = !history_.empty() && filler == filler_ ? rowByte_ : 0;
    filler_ = filler;
    rowBegin_ = history_.size();
    history_.insert(history_.end(), values.begin(), values.end());
    rowEnd_ = history_.size();
    rowByte_ = nextRowByte_ + 1;
    nextRowByte_ += 1 + units_.rowBytes();
}

void RowCompressor::updateChecksum(std::uint8_t filter, std::span<const std::uint32_t> values) {
    std::uint8_t* out = rowBytes_.data();
    *out++ = filter;
    const unsigned copies = filler_ == UnitFiller::kItself ? units_.bytes / units_.valueBytes : 1;
    if (units_.bytes <= sizeof(std::uint64_t)) {
        std::uint64_t factor = 0;
        for (unsigned i = 0; i < copies; ++i) factor = factor << (8 * units_.valueBytes) | 1;
        for (const std::uint32_t value : values) {
            storeLittleEndian(out, value * factor);
            out += units_.bytes;  // the next unit overwrites what was too much
        }
    } else {
        for (const std::uint32_t value : values) {
            for (unsigned i = 0; i < units_.bytes; ++i) {
                const unsigned shift = 8 * (i % units_.valueBytes);
                out[i] = i / units_.valueBytes < copies ? static_cast<std::uint8_t>(value >> shift)
                                                        : std::uint8_t{0};
            }
            out += units_.bytes;
        }
    }
    checksum_ = libdeflate_adler32(checksum_, rowBytes_.data(), 1 + units_.rowBytes());
}

std::size_t RowCompressor::writeRun(std::size_t unit) {
    const std::uint32_t value = history_[unit];
    const std::size_t most = rowEnd_ - unit;
    std::size_t run = 0;
    if (filler_ == UnitFiller::kZeros && value == 0) {
        run = 1 + countEqual(&history_[unit] + 1, &history_[unit], most - 1);
        if (run < kLongRun && run < most) return unit;
        zeros_ += run * units_.bytes;
    } else if (filler_ == UnitFiller::kItself && unit > rowBegin_ && value == history_[unit - 1]) {
        run = countEqual(&history_[unit], &history_[unit] - 1, most);
        if (run < kLongRun) return unit;
        stream_.match(run * units_.bytes, units_.valueBytes);
    } else {
        return unit;
    }
    // What comes after is found again by the end of the run.
    remember(unit + run - 1);
    return unit + run;
}

void RowCompressor::writeUnit(std::uint32_t value) {
    writeZeros();
    const std::size_t rest = units_.bytes - units_.valueBytes;
    if (filler_ == UnitFiller::kItself && rest >= DeflateStream::kMinimumMatch &&
        (value & 0xffffff) == (value & 0xff) * 0x10101 && units_.valueBytes == 3) {
        stream_.literal(static_cast<std::uint8_t>(value));  // grey: one byte is all
        stream_.match(units_.bytes - 1, 1);
        return;
    }
    for (unsigned i = 0; i < units_.valueBytes; ++i) {
        stream_.literal(static_cast<std::uint8_t>(value >> (8 * i)));
    }
    if (filler_ == UnitFiller::kZeros) {
        zeros_ = rest;
    } else if (rest >= DeflateStream::kMinimumMatch) {
        stream_.match(rest, units_.valueBytes);
    } else {
        for (std::size_t i = 0; i < rest; ++i) stream_.literal(static_cast<std::uint8_t>(value));
    }
}

void RowCompressor::writeZeros() {
    const std::size_t count = std::exchange(zeros_, 0);
    if (count > DeflateStream::kMinimumMatch) {
        stream_.literal(0);
        stream_.match(count - 1, 1);
    } else {
        for (std::size_t i = 0; i < count; ++i) stream_.literal(0);
    }
}

RowCompressor::Match RowCompressor::findMatch(std::size_t unit) const {
    Match best;
    if (unit > rowBegin_) consider(best, unit, position(unit - 1));
    if (rowAboveByte_ > 0) {
        Position above = position(unit);
        above.unit -= static_cast<std::uint32_t>(units_.count);
        above.byte -= static_cast<std::uint32_t>(rowByte_ - rowAboveByte_);
        consider(best, unit, above);
    }
    if (unit + fewUnits_ <= rowEnd_) consider(best, unit, seen().few[hash(unit, fewUnits_)]);
    if (unit + moreUnits_ <= rowEnd_) {
        for (const Position& candidate : seen().more[hash(unit, moreUnits_)]) {
            consider(best, unit, candidate);
        }
    }
    return best;
}

void RowCompressor::consider(Match& best, std::size_t unit, Position candidate) const {
    const std::size_t distance = position(unit).byte - candidate.byte;
    if (distance > DeflateStream::kWindow) return;
    const std::size_t earlier = candidate.unit - firstUnit_;
    if (history_[earlier] != history_[unit]) return;
    std::size_t most = rowEnd_ - unit;
    // Behind the end of its row there are other bytes.
    if (earlier < rowBegin_) most = std::min(most, units_.count - earlier % units_.count);
    const std::size_t equal = countEqual(&history_[unit], &history_[earlier], most);
    if (equal < fewUnits_) return;
    constexpr int kCodes = 9;  // of length and distance; the distance's own bits come on top
    const int gain =
        static_cast<int>(equal) * unitBits_ - kCodes - static_cast<int>(std::bit_width(distance));
    if (gain > best.gain) best = {equal, distance, gain};
}

void RowCompressor::remember(std::size_t unit) {
    if (unit + fewUnits_ > rowEnd_) return;
    seen().few[hash(unit, fewUnits_)] = position(unit);
    if (unit + moreUnits_ > rowEnd_) return;
    auto& candidates = seen().more[hash(unit, moreUnits_)];
    std::shift_right(candidates.begin(), candidates.end(), 1);
    candidates.front() = position(unit);
}

std::size_t RowCompressor::hash(std::size_t unit, std::size_t units) const {
    std::uint32_t mixed = history_[unit];
    for (std::size_t i = 1; i < units; ++i) {
        mixed = mixed * 2654435761U ^ std::rotl(history_[unit + i], 16);
    }
    return mixed * 2246822519U >> (32 - kHashBits);
}

RowCompressor::Position RowCompressor::position(std::size_t unit) const {
    return {static_cast<std::uint32_t>(firstUnit_ + unit),
            static_cast<std::uint32_t>(rowByte_ + (unit - rowBegin_) * units_.bytes)};
}

}  // namespace quil
