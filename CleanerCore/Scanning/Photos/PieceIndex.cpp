#include "CleanerCore/Scanning/Photos/PieceIndex.h"

#include <array>
#include <bit>
#include <numeric>

// Counting bits takes one instruction on all but the oldest of these processors, which the compiler must be
// told to look for. ThreadSanitizer would crash in that look, which comes before its own start.
#if defined(__x86_64__) && defined(__ELF__) && !__has_feature(thread_sanitizer)
#define LOFTMERE_COUNTS_BITS __attribute__((target_clones("popcnt", "default")))
#else
#define LOFTMERE_COUNTS_BITS
#endif

namespace loftmere {

namespace {

constexpr size_t bucketCount = size_t{1} << PieceIndex::pieceBits;

// What leads from a bucket to itself and to those that differ in one bit.
constexpr std::array<uint32_t, PieceIndex::pieceBits + 1> toNeighbour = [] {
    std::array<uint32_t, PieceIndex::pieceBits + 1> steps{};
    for (size_t bit = 0; bit < PieceIndex::pieceBits; ++bit) steps[bit + 1] = 1U << bit;
    return steps;
}();

size_t bucketsOf(bool neighbours) {
    return neighbours ? toNeighbour.size() : 1;
}

} // namespace

PieceIndex::PieceIndex(std::span<const uint64_t> words, const std::vector<bool>& used, size_t which)
    : turn_(int(which * pieceBits)), begins_(bucketCount + 1) {
    for (size_t i = 0; i < words.size(); ++i) {
        if (!used[i]) ++begins_[bucketOf(words[i]) + 1];
    }
    std::partial_sum(begins_.begin(), begins_.end(), begins_.begin());
    members_.resize(begins_.back());
    words_.resize(begins_.back());
    std::vector<uint32_t> places = begins_;
    for (size_t i = 0; i < words.size(); ++i) {
        if (used[i]) continue;
        const uint32_t place = places[bucketOf(words[i])]++;
        members_[place] = uint32_t(i);
        words_[place] = words[i];
    }
}

void PieceIndex::expect(uint64_t word, bool neighbours) const {
    for (size_t i = 0; i < bucketsOf(neighbours); ++i) {
        const uint32_t bucket = bucketOf(word) ^ toNeighbour[i];
        __builtin_prefetch(words_.data() + begins_[bucket]);
        __builtin_prefetch(words_.data() + begins_[bucket + 1]);
    }
}

LOFTMERE_COUNTS_BITS size_t PieceIndex::collect(uint64_t word, bool neighbours, int distance,
                                                std::vector<uint32_t>& found) const {
    const uint64_t* const words = words_.data();
    size_t looks = 0;
    for (size_t i = 0; i < bucketsOf(neighbours); ++i) {
        const uint32_t bucket = bucketOf(word) ^ toNeighbour[i];
        const uint32_t begin = begins_[bucket];
        const uint32_t end = begins_[bucket + 1];
        for (uint32_t place = begin; place < end; ++place) {
            if (std::popcount(words[place] ^ word) <= distance) found.push_back(members_[place]);
        }
        looks += end - begin;
    }
    return looks;
}

uint32_t PieceIndex::bucketOf(uint64_t word) const {
    return uint16_t(std::rotr(word, turn_));
}

} // namespace loftmere
