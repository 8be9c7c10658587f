#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace quil {

/// Writes a deflate stream (RFC 1951) of literals and matches that the caller has chosen, in blocks
/// with Huffman codes of their own.
class DeflateStream {
  public:
    static constexpr std::size_t kMinimumMatch = 3;
    static constexpr std::size_t kWindow = 32768;

    /// Appends to `out`, which must outlive this.
    explicit DeflateStream(std::string& out) : out_(out) {}

    void literal(std::uint8_t byte) {
        if (count_ == kBlockSymbols) writeBlock(/*isLast=*/false);
        ++literals_[byte];
        symbols_[count_++] = byte;
    }

    /// Repeats `length` bytes, at least kMinimumMatch, from `distance` bytes before (1 to kWindow).
    void match(std::size_t length, std::size_t distance);

    /// Ends the stream, with a whole byte.
    void finish();

  private:
    /// One block's symbols: enough that its codes are a small part of it, few enough that they fit.
    static constexpr std::size_t kBlockSymbols = 32768;
    static constexpr std::size_t kLiteralCodes = 286;
    static constexpr std::size_t kDistanceCodes = 30;

    void writeBlock(bool isLast);

    std::string& out_;
    /// A literal's byte; or a match with the top bit set, the length and the distance.
    std::unique_ptr<std::uint32_t[]> symbols_ = std::make_unique<std::uint32_t[]>(kBlockSymbols);
    std::size_t count_ = 0;
    std::array<std::uint32_t, kLiteralCodes> literals_{};
    std::array<std::uint32_t, kDistanceCodes> distances_{};
    std::vector<std::uint8_t> block_;
    /// Bits that wait for their byte.
    std::uint64_t pendingBits_ = 0;
    unsigned pendingCount_ = 0;
};

}  // namespace quil
