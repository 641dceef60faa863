#include "CleanerCore/Scanning/Photos/Likeness.h"

#include <algorithm>
#include <array>
#include <bit>
#include <numeric>
#include <utility>

// All but the oldest of these processors count bits with one instruction, but only if the compiler makes the
// program check for it. That check runs before ThreadSanitizer starts, and would crash under it.
#if defined(__x86_64__) && defined(__ELF__) && !__has_feature(thread_sanitizer)
#define LOFTMERE_COUNTS_BITS __attribute__((target_clones("popcnt", "default")))
#else
#define LOFTMERE_COUNTS_BITS
#endif

namespace loftmere {

std::optional<Likeness> dHash(const std::string& path, const FS::CancelCheck& isCancelled) {
    const auto file = RegularFile::open(path);
    if (!file) return std::nullopt;
    const auto likeness = likenessOf(*file, isCancelled);
    return likeness ? std::optional(*likeness) : std::nullopt;
}

std::expected<Likeness, NoThumbnail> likenessOf(const RegularFile& file, const FS::CancelCheck& isCancelled) {
    const auto thumbnail = readThumbnail(file, isCancelled);
    if (!thumbnail) return std::unexpected(thumbnail.error());
    return Likeness{.hash = differenceHash(thumbnail->image), .pixelCount = thumbnail->pixelCount};
}

uint64_t differenceHash(const GreyImage& image) {
    constexpr int columns = 9;
    constexpr int rows = 8;
    AreaReducer reducer(image.width, image.height, columns, rows);
    for (int y = 0; y < image.height; ++y) reducer.addRow(image.row(y));
    const GreyImage& tiny = reducer.result();
    uint64_t hash = 0;
    for (int y = 0; y < rows; ++y) {
        for (int x = 0; x + 1 < columns; ++x) hash = hash << 1 | uint64_t(tiny.at(x, y) > tiny.at(x + 1, y));
    }
    return hash;
}

// How hashes are grouped. Equal hashes are in the same group or in none, so the work is done on distinct
// values. A value whose turn comes is far from every earlier centre, which would have taken it otherwise. So
// each value has to look only at those that are still free.
//
// To find near values, the 64 bits are cut into four pieces of 16. Of two values within a distance of 6, one
// of the first three pieces differs in at most one bit, or else those three account for the whole distance
// and the fourth is equal. So looking up 17 neighbours of three pieces, and the fourth piece itself, finds
// every near value.

namespace LikenessGroups {

namespace {

// Finds, among many words of 64 bits, those that are near a given word in one of their four pieces of 16
// bits.
class PieceIndex {
public:
    static constexpr size_t pieces = 4;
    static constexpr size_t pieceBits = 16;

    // Indexes the words that are not `used`, by their piece `which`, counted from the lowest.
    PieceIndex(std::span<const uint64_t> words, const std::vector<bool>& used, size_t which);

    // Makes the processor fetch what `collect` will read.
    void expect(uint64_t word, bool neighbours) const;

    // Adds to `found` the index of each word within `distance` whose piece equals that of `word` or, with
    // `neighbours`, differs from it in one bit. Returns how many words it has looked at.
    size_t collect(uint64_t word, bool neighbours, int distance, std::vector<uint32_t>& found) const;

private:
    uint32_t bucketOf(uint64_t word) const;

    int turn_;
    // The words are kept apart from their indexes, since nearly all words looked at are not near.
    std::vector<uint32_t> begins_;  // of each bucket, and the end of the last
    std::vector<uint64_t> words_;   // bucket after bucket
    std::vector<uint32_t> members_; // the index of each of them
};

constexpr size_t bucketCount = size_t{1} << PieceIndex::pieceBits;

// The changes that lead from a bucket to itself and to those that differ in one bit.
constexpr std::array<uint32_t, PieceIndex::pieceBits + 1> toNeighbour = [] {
    std::array<uint32_t, PieceIndex::pieceBits + 1> steps{};
    for (size_t bit = 0; bit < PieceIndex::pieceBits; ++bit) steps[bit + 1] = 1U << bit;
    return steps;
}();

size_t bucketsOf(bool neighbours) {
    return neighbours ? toNeighbour.size() : 1;
}

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

constexpr size_t looksBetweenQuestions = size_t{1} << 22; // some milliseconds

static_assert(maximumDistance == 6, "the lookups below depend on it");

// The bits in another order, in which each piece has bits from all rows and columns of the picture. The bits
// of one row are often equal in real photographs (a sky, a dark border), which would crowd a few buckets.
uint64_t inPieces(uint64_t hash) {
    std::array<uint64_t, PieceIndex::pieces> pieces{};
    for (size_t row = 0; row < 8; ++row) {
        for (size_t column = 0; column < 8; ++column) {
            uint64_t& piece = pieces[(column + 8 - row) % pieces.size()];
            piece = piece << 1 | (hash >> (row * 8 + column) & 1U);
        }
    }
    uint64_t word = 0;
    for (const uint64_t piece : pieces) word = word << PieceIndex::pieceBits | piece;
    return word;
}

class Grouping {
public:
    Grouping(std::span<const uint64_t> hashes, const std::function<bool()>& isCancelled)
        : isCancelled_(isCancelled) {
        sortOut(hashes);
        used_.resize(values_.size());
        left_ = values_.size();
    }

    std::vector<std::vector<size_t>> groups() {
        std::vector<std::vector<size_t>> groups;
        for (uint32_t centre = 0; centre < values_.size(); ++centre) {
            if (used_[centre]) continue;
            if (left_ <= indexed_ / 2 || pieces_.empty()) indexWhatIsLeft();
            if (mustStop()) return {};
            takeNear(centre);
            if (auto members = membersTaken(); members.size() > 1) groups.push_back(std::move(members));
        }
        return groups;
    }

private:
    static constexpr uint32_t none = ~uint32_t{0};

    // Fills `sorted_`, and `values_` and `begins_` with the distinct ones in order of their first index.
    void sortOut(std::span<const uint64_t> hashes) {
        sorted_.reserve(hashes.size());
        for (const uint64_t hash : hashes) sorted_.emplace_back(hash, uint32_t(sorted_.size()));
        std::ranges::sort(sorted_);
        std::vector<uint32_t> beginAt(hashes.size(), none);
        for (uint32_t i = 0; i < sorted_.size(); ++i) {
            if (i == 0 || sorted_[i].first != sorted_[i - 1].first) beginAt[sorted_[i].second] = i;
        }
        for (const uint32_t begin : beginAt) {
            if (begin == none) continue;
            begins_.push_back(begin);
            values_.push_back(inPieces(sorted_[begin].first));
        }
    }

    // Done again whenever half of them are gone, so that no time is spent on skipping those.
    void indexWhatIsLeft() {
        pieces_.clear();
        for (size_t which = 0; which < PieceIndex::pieces && !isCancelled_(); ++which) {
            pieces_.emplace_back(values_, used_, which);
        }
        indexed_ = left_;
    }

    bool mustStop() {
        if (pieces_.size() < PieceIndex::pieces) return true;
        if (looks_ < looksBetweenQuestions) return false;
        looks_ = 0;
        return isCancelled_();
    }

    // Fills `taken_` with the centre and all that it takes, and marks them.
    void takeNear(uint32_t centre) {
        const uint64_t value = values_[centre];
        taken_.clear();
        for (const PieceIndex& piece : pieces_) piece.expect(value, &piece != &pieces_.back());
        for (const PieceIndex& piece : pieces_) {
            looks_ += piece.collect(value, &piece != &pieces_.back(), maximumDistance, taken_);
        }
        std::erase_if(taken_, [&](uint32_t other) { return used_[other]; });
        std::ranges::sort(taken_);
        taken_.erase(std::ranges::unique(taken_).begin(), taken_.end());
        for (const uint32_t other : taken_) used_[other] = true;
        left_ -= taken_.size();
    }

    std::vector<size_t> membersTaken() const {
        std::vector<size_t> members;
        for (const uint32_t value : taken_) {
            const uint64_t hash = sorted_[begins_[value]].first;
            for (size_t i = begins_[value]; i < sorted_.size() && sorted_[i].first == hash; ++i) {
                members.push_back(sorted_[i].second);
            }
        }
        std::ranges::sort(members);
        return members;
    }

    const std::function<bool()>& isCancelled_;
    std::vector<std::pair<uint64_t, uint32_t>> sorted_; // each hash with its index
    std::vector<uint64_t> values_;
    std::vector<uint32_t> begins_; // of each value's stretch in `sorted_`
    std::vector<bool> used_;
    size_t left_ = 0; // values that are not used
    size_t indexed_ = 0;
    std::vector<PieceIndex> pieces_;
    std::vector<uint32_t> taken_;
    size_t looks_ = 0; // since cancellation was asked for
};

} // namespace

std::vector<std::vector<size_t>> of(std::span<const uint64_t> hashes,
                                    const std::function<bool()>& isCancelled) {
    if (hashes.size() < 2) return {};
    const std::function<bool()> never = [] { return false; };
    return Grouping(hashes, isCancelled ? isCancelled : never).groups();
}

} // namespace LikenessGroups

} // namespace loftmere
