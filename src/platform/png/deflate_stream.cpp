#include "platform/png/deflate_stream.h"

#include <algorithm>
#include <bit>

#include "platform/png/huffman_code.h"
#include "platform/png/little_endian.h"

namespace quil {
namespace {

constexpr std::size_t kMaximumMatch = 258;
constexpr std::size_t kEndOfBlock = 256;
constexpr std::size_t kFirstLength = 257;
constexpr unsigned kLongestCode = 15;
constexpr unsigned kLongestLengthCode = 7;
constexpr std::uint32_t kIsMatch = 0x80000000;
constexpr unsigned kBitsPerSymbol = 48;  // of the longest: two codes and their extra bits

/// A length or distance as deflate writes it: a symbol, and so many bits of the number itself.
struct Symbol {
    unsigned symbol;
    unsigned extraBits;
};

/// Of a length, less three.
constexpr Symbol lengthSymbol(unsigned length) {
    if (length == kMaximumMatch - 3) return {28, 0};
    if (length < 8) return {length, 0};
    const unsigned bits = static_cast<unsigned>(std::bit_width(length)) - 3;
    return {4 * (bits + 1) + ((length >> bits) & 3), bits};
}

constexpr std::array<Symbol, 256> kLengthSymbols = [] {
    std::array<Symbol, 256> symbols{};
    for (unsigned i = 0; i < 256; ++i) symbols[i] = lengthSymbol(i);
    return symbols;
}();

/// Of a distance, less one.
constexpr Symbol distanceSymbol(unsigned distance) {
    if (distance < 4) return {distance, 0};
    const unsigned bits = static_cast<unsigned>(std::bit_width(distance)) - 2;
    return {2 * (bits + 1) + ((distance >> bits) & 1), bits};
}

constexpr unsigned lowBits(unsigned number, unsigned count) {
    return number & ((1U << count) - 1);
}

/// Writes bits into memory, lowest first. The memory must have room for 8 bytes more than it takes.
class BitWriter {
  public:
    BitWriter(std::uint8_t* out, std::uint64_t bits, unsigned count)
        : out_(out), bits_(bits), count_(count) {}

    /// At most 56 bits between two calls of `flush`.
    void put(std::uint64_t value, unsigned count) {
        bits_ |= value << count_;
        count_ += count;
    }
    void flush() {
        storeLittleEndian(out_, bits_);
        out_ += count_ / 8;
        bits_ >>= count_ & ~7U;
        count_ &= 7;
    }
    std::uint8_t* end() const { return out_; }
    std::uint64_t bits() const { return bits_; }
    unsigned count() const { return count_; }

  private:
    std::uint8_t* out_;
    std::uint64_t bits_;
    unsigned count_;
};

/// A run of equal code lengths, or one of them (RFC 1951, 3.2.7).
struct LengthRun {
    std::uint8_t symbol;
    std::uint8_t extra;
    std::uint8_t extraBits;
};

std::vector<LengthRun> lengthRuns(const std::vector<std::uint8_t>& lengths) {
    std::vector<LengthRun> runs;
    for (std::size_t i = 0; i < lengths.size();) {
        std::size_t count = 1;
        while (i + count < lengths.size() && lengths[i + count] == lengths[i]) ++count;
        const std::uint8_t length = lengths[i];
        i += count;
        if (length != 0) {
            runs.push_back({length, 0, 0});
            --count;
        }
        while (count >= 3) {
            const std::size_t most = length != 0 ? 6 : 138;
            const std::size_t taken = std::min(count, most);
            if (length != 0) {
                runs.push_back({16, static_cast<std::uint8_t>(taken - 3), 2});
            } else if (taken < 11) {
                runs.push_back({17, static_cast<std::uint8_t>(taken - 3), 3});
            } else {
                runs.push_back({18, static_cast<std::uint8_t>(taken - 11), 7});
            }
            count -= taken;
        }
        for (; count > 0; --count) runs.push_back({length, 0, 0});
    }
    return runs;
}

void writeCodes(BitWriter& bits, const HuffmanCode& literals, const HuffmanCode& distances) {
    constexpr std::array<std::uint8_t, 19> kOrder = {16, 17, 18, 0, 8,  7, 9,  6, 10, 5,
                                                     11, 4,  12, 3, 13, 2, 14, 1, 15};
    std::vector<std::uint8_t> lengths = literals.lengths;
    lengths.insert(lengths.end(), distances.lengths.begin(), distances.lengths.end());
    const std::vector<LengthRun> runs = lengthRuns(lengths);
    std::array<std::uint32_t, kOrder.size()> frequencies{};
    for (const LengthRun& run : runs) ++frequencies[run.symbol];
    const HuffmanCode code = huffmanCode(frequencies, kLongestLengthCode);

    bits.put(literals.lengths.size() - 257, 5);
    bits.put(distances.lengths.size() - 1, 5);
    bits.put(kOrder.size() - 4, 4);
    bits.flush();
    for (const std::uint8_t symbol : kOrder) {
        bits.put(code.lengths[symbol], 3);
        bits.flush();
    }
    for (const LengthRun& run : runs) {
        bits.put(code.codes[run.symbol], code.lengths[run.symbol]);
        bits.put(run.extra, run.extraBits);
        bits.flush();
    }
}

}  // namespace

void DeflateStream::match(std::size_t length, std::size_t distance) {
    while (length > 0) {
        std::size_t part = std::min(length, kMaximumMatch);
        if (length > part && length - part < kMinimumMatch) part = length - kMinimumMatch;
        length -= part;
        if (count_ == kBlockSymbols) writeBlock(/*isLast=*/false);
        const auto lengthCode = static_cast<unsigned>(part - kMinimumMatch);
        const auto distanceCode = static_cast<unsigned>(distance - 1);
        ++literals_[kFirstLength + kLengthSymbols[lengthCode].symbol];
        ++distances_[distanceSymbol(distanceCode).symbol];
        symbols_[count_++] = kIsMatch | lengthCode << 16 | distanceCode;
    }
}

void DeflateStream::finish() {
    writeBlock(/*isLast=*/true);
    if (pendingCount_ > 0) out_ += static_cast<char>(pendingBits_);
    pendingBits_ = pendingCount_ = 0;
}

void DeflateStream::writeBlock(bool isLast) {
    ++literals_[kEndOfBlock];
    const HuffmanCode literals = huffmanCode(literals_, kLongestCode);
    const HuffmanCode distances = huffmanCode(distances_, kLongestCode);
    block_.resize((kBlockSymbols + 1) * kBitsPerSymbol / 8 + 1024);
    BitWriter bits(block_.data(), pendingBits_, pendingCount_);
    bits.put(isLast ? 1 : 0, 1);
    bits.put(2, 2);  // with codes of its own
    writeCodes(bits, literals, distances);
    for (std::size_t i = 0; i < count_; ++i) {
        const std::uint32_t symbol = symbols_[i];
        if (!(symbol & kIsMatch)) {
            bits.put(literals.codes[symbol], literals.lengths[symbol]);
        } else {
            const unsigned length = symbol >> 16 & 0xff;
            const Symbol lengthCode = kLengthSymbols[length];
            const std::size_t code = kFirstLength + lengthCode.symbol;
            bits.put(literals.codes[code], literals.lengths[code]);
            bits.put(lowBits(length, lengthCode.extraBits), lengthCode.extraBits);
            const unsigned distance = symbol & 0x7fff;
            const Symbol distanceCode = distanceSymbol(distance);
            bits.put(distances.codes[distanceCode.symbol], distances.lengths[distanceCode.symbol]);
            bits.put(lowBits(distance, distanceCode.extraBits), distanceCode.extraBits);
        }
        bits.flush();
    }
    bits.put(literals.codes[kEndOfBlock], literals.lengths[kEndOfBlock]);
    bits.flush();
    out_.append(reinterpret_cast<const char*>(block_.data()),
                static_cast<std::size_t>(bits.end() - block_.data()));
    pendingBits_ = bits.bits();
    pendingCount_ = bits.count();
    count_ = 0;
    literals_ = {};
    distances_ = {};
}

}  // namespace quil
