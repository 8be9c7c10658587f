#include "platform/png/huffman_code.h"

#include <algorithm>
#include <array>

namespace quil {
namespace {

constexpr unsigned kLongest = 15;

/// How many codes there are of each length.
using LengthCounts = std::array<std::uint32_t, kLongest + 1>;

/// Of a tree with these leaves, rarest first (at least two).
LengthCounts treeDepths(std::span<const std::uint32_t> leaves, unsigned maximumLength) {
    const std::size_t count = leaves.size();
    // Inner nodes come in ascending order, too: the rarest two are always at one of two fronts.
    std::vector<std::uint64_t> weights(count - 1);
    std::vector<std::size_t> parents(count * 2 - 1);
    std::size_t leaf = 0, inner = 0;
    for (std::size_t made = 0; made < count - 1; ++made) {
        for (int side = 0; side < 2; ++side) {
            const bool takeLeaf = leaf < count && (inner == made || leaves[leaf] <= weights[inner]);
            weights[made] += takeLeaf ? leaves[leaf] : weights[inner];
            parents[takeLeaf ? leaf++ : count + inner++] = count + made;
        }
    }
    LengthCounts counts{};
    std::vector<unsigned> depths(count * 2 - 1);
    std::uint32_t excess = 0;  // of the clamped code over a complete one, in longest codes
    for (std::size_t node = count * 2 - 2; node-- > 0;) {
        depths[node] = depths[parents[node]] + 1;
        if (node < count) ++counts[std::min(depths[node], maximumLength)];
    }
    for (unsigned length = 1; length <= maximumLength; ++length) {
        excess += counts[length] << (maximumLength - length);
    }
    // A longest code moves to under a shorter one, which gets a bit longer by that.
    for (excess -= 1U << maximumLength; excess > 0; --excess) {
        unsigned length = maximumLength - 1;
        while (counts[length] == 0) --length;
        --counts[length];
        counts[length + 1] += 2;
        --counts[maximumLength];
    }
    return counts;
}

std::uint16_t reversed(unsigned code, unsigned length) {
    unsigned result = 0;
    for (; length > 0; --length, code >>= 1) result = result << 1 | (code & 1);
    return static_cast<std::uint16_t>(result);
}

}  // namespace

HuffmanCode huffmanCode(std::span<const std::uint32_t> frequencies, unsigned maximumLength) {
    std::vector<std::uint32_t> symbols;
    for (std::uint32_t i = 0; i < frequencies.size(); ++i) {
        if (frequencies[i] > 0) symbols.push_back(i);
    }
    for (std::uint32_t i = 0; symbols.size() < 2; ++i) {
        if (frequencies[i] == 0) symbols.push_back(i);
    }
    std::ranges::stable_sort(symbols, {}, [&](std::uint32_t i) { return frequencies[i]; });
    std::vector<std::uint32_t> leaves;
    for (const std::uint32_t symbol : symbols) leaves.push_back(frequencies[symbol]);
    const LengthCounts counts = treeDepths(leaves, maximumLength);

    HuffmanCode result{std::vector<std::uint8_t>(frequencies.size()),
                       std::vector<std::uint16_t>(frequencies.size())};
    std::size_t rarest = 0;
    for (unsigned length = maximumLength; length > 0; --length) {
        for (std::uint32_t i = 0; i < counts[length]; ++i) {
            result.lengths[symbols[rarest++]] = static_cast<std::uint8_t>(length);
        }
    }
    std::array<unsigned, kLongest + 1> next{};
    for (unsigned length = 1; length < kLongest; ++length) {
        next[length + 1] = (next[length] + counts[length]) << 1;
    }
    for (std::size_t i = 0; i < result.lengths.size(); ++i) {
        const unsigned length = result.lengths[i];
        if (length > 0) result.codes[i] = reversed(next[length]++, length);
    }
    return result;
}

}  // namespace quil
