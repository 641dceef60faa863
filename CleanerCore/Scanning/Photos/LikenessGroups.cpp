#include "CleanerCore/Scanning/Photos/LikenessGroups.h"

#include "CleanerCore/Scanning/Photos/PieceIndex.h"

#include <algorithm>
#include <array>
#include <utility>

// Equal hashes are in one group or none, so the work is done on distinct values. A value that takes others in
// its turn meets none that was met before: had an earlier value been near, it would have taken this one. So
// every value needs to look only at those that are still to be had.
//
// Near values are found by cutting the 64 bits in four pieces of 16. Of two values within a distance of 6,
// one of the first three pieces differs in at most one bit, or else those three account for all of the
// distance and the fourth is equal. Looking up 17 neighbours of three pieces and the fourth itself therefore
// meets every near value.

namespace loftmere::LikenessGroups {

namespace {

constexpr size_t looksBetweenQuestions = size_t{1} << 22; // some milliseconds

static_assert(maximumDistance == 6, "the lookups below rest on it");

// The bits in another order, with each piece made of bits from all rows and columns of the picture: those of
// one row go together in real photographs (a sky, a dark border), which would crowd a few buckets.
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

    // Done again whenever half of them have gone, so that no time is spent on passing over those.
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

} // namespace loftmere::LikenessGroups
