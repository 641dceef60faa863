#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace loftmere {

// Finds, among many words of 64 bits, those that are near another one in one of their four pieces of 16 bits.
// Safe to ask from several threads.
class PieceIndex {
public:
    static constexpr size_t pieces = 4;
    static constexpr size_t pieceBits = 16;

    // Indexes the words that are not `used`, by their piece `which`, counted from the lowest.
    PieceIndex(std::span<const uint64_t> words, const std::vector<bool>& used, size_t which);

    // Has the processor fetch what `collect` will look at.
    void expect(uint64_t word, bool neighbours) const;

    // Adds to `found` the index of each word within `distance` whose piece is that of `word` or, when
    // `neighbours` are asked for, differs from it in one bit. Answers how many words it has looked at.
    size_t collect(uint64_t word, bool neighbours, int distance, std::vector<uint32_t>& found) const;

private:
    uint32_t bucketOf(uint64_t word) const;

    int turn_;
    // The words stand apart from their indexes, since nearly all that is looked at is not near.
    std::vector<uint32_t> begins_;  // of each bucket, and the end of the last
    std::vector<uint64_t> words_;   // bucket after bucket
    std::vector<uint32_t> members_; // the index of each of them
};

} // namespace loftmere
