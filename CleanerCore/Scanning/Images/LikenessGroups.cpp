#include "CleanerCore/Scanning/Images/LikenessGroups.h"

#include <algorithm>
#include <array>
#include <bit>
#include <numeric>

// Equal hashes are in one group or none, so the work is done on distinct values. A value that takes others in
// its turn meets none that was met before: had an earlier value been near, it would have taken this one. So
// every value needs to look only at later ones.
//
// Near values are found by cutting the 64 bits in four pieces of 16. Of two values within a distance of 6,
// one of the first three pieces differs in at most one bit, or else those three account for all of the
// distance and the fourth is equal. Looking up 17 neighbours of three pieces and the fourth itself therefore
// meets every near value.

namespace loftmere::LikenessGroups {

namespace {

constexpr size_t pieceCount = 4;
constexpr size_t pieceBits = 16;
constexpr size_t bucketCount = size_t{1} << pieceBits;

static_assert(maximumDistance == 6, "the lookups below rest on it");

// A distinct hash and the indexes that have it: a stretch of `order`.
struct Value {
    uint64_t hash;
    uint32_t begin;
    uint32_t end;
};

// Each piece takes its bits from all rows and columns of the picture: bits of one row go together in real
// photographs (a sky, a dark border), which would crowd a few buckets.
uint16_t piece(uint64_t hash, size_t which) {
    uint32_t bits = 0;
    for (size_t row = 0; row < 8; ++row) {
        const size_t column = (which + row) % pieceCount;
        const auto rowBits = uint32_t(hash >> (row * 8));
        bits = bits << 2 | (rowBits >> column & 1U) << 1 | (rowBits >> (column + pieceCount) & 1U);
    }
    return uint16_t(bits);
}

// All values sorted into buckets by one piece.
class PieceIndex {
public:
    struct Slot {
        uint64_t hash;
        uint32_t value;
    };

    PieceIndex(std::span<const Value> values, size_t which)
        : begins_(bucketCount), ends_(bucketCount), slots_(values.size()) {
        for (const Value& value : values) ++ends_[piece(value.hash, which)];
        std::exclusive_scan(ends_.begin(), ends_.end(), begins_.begin(), uint32_t{0});
        ends_ = begins_;
        for (uint32_t i = 0; i < values.size(); ++i) {
            slots_[ends_[piece(values[i].hash, which)]++] = {values[i].hash, i};
        }
    }

    // Adds the values of a bucket that are near `hash`, come after `centre` and are still to be had. Those
    // before it will never be wanted again and go.
    void collect(uint32_t bucket, uint64_t hash, uint32_t centre, const std::vector<bool>& used,
                 std::vector<uint32_t>& near) {
        uint32_t& begin = begins_[bucket];
        const uint32_t end = ends_[bucket];
        while (begin < end && slots_[begin].value <= centre) ++begin;
        for (uint32_t i = begin; i < end; ++i) {
            const Slot& slot = slots_[i];
            if (std::popcount(slot.hash ^ hash) <= maximumDistance && !used[slot.value])
                near.push_back(slot.value);
        }
    }

private:
    std::vector<uint32_t> begins_;
    std::vector<uint32_t> ends_;
    std::vector<Slot> slots_; // bucket after bucket, each in order of discovery
};

// The distinct hashes in order of their first index. `order` receives the indexes sorted by hash.
std::vector<Value> distinctValues(std::span<const uint64_t> hashes, std::vector<uint32_t>& order) {
    order.resize(hashes.size());
    std::iota(order.begin(), order.end(), uint32_t{0});
    std::ranges::stable_sort(order, {}, [&](uint32_t i) { return hashes[i]; });
    std::vector<Value> values;
    for (uint32_t i = 0; i < order.size(); ++i) {
        const uint64_t hash = hashes[order[i]];
        if (values.empty() || values.back().hash != hash) values.push_back({hash, i, i});
        ++values.back().end;
    }
    std::ranges::sort(values, {}, [&](const Value& value) { return order[value.begin]; });
    return values;
}

class Grouping {
public:
    explicit Grouping(std::span<const uint64_t> hashes)
        : values_(distinctValues(hashes, order_)), used_(values_.size()) {
        for (size_t which = 0; which < pieceCount; ++which) pieces_.emplace_back(values_, which);
    }

    std::vector<std::vector<size_t>> groups() {
        std::vector<std::vector<size_t>> groups;
        for (uint32_t centre = 0; centre < values_.size(); ++centre) {
            if (used_[centre]) continue;
            takeNear(centre);
            if (auto members = membersTaken(); members.size() > 1) groups.push_back(std::move(members));
        }
        return groups;
    }

private:
    // Fills `taken_` with the centre and all that it takes, and marks them.
    void takeNear(uint32_t centre) {
        taken_.assign(1, centre);
        const uint64_t hash = values_[centre].hash;
        for (size_t which = 0; which < pieceCount; ++which) {
            const uint16_t own = piece(hash, which);
            pieces_[which].collect(own, hash, centre, used_, taken_);
            if (which == pieceCount - 1) break;
            for (size_t bit = 0; bit < pieceBits; ++bit) {
                pieces_[which].collect(own ^ (1U << bit), hash, centre, used_, taken_);
            }
        }
        std::ranges::sort(taken_);
        taken_.erase(std::ranges::unique(taken_).begin(), taken_.end());
        for (const uint32_t value : taken_) used_[value] = true;
    }

    std::vector<size_t> membersTaken() const {
        std::vector<size_t> members;
        for (const uint32_t value : taken_) {
            const auto first = order_.begin();
            members.insert(members.end(), first + values_[value].begin, first + values_[value].end);
        }
        std::ranges::sort(members);
        return members;
    }

    std::vector<uint32_t> order_;
    std::vector<Value> values_;
    std::vector<bool> used_;
    std::vector<PieceIndex> pieces_;
    std::vector<uint32_t> taken_;
};

} // namespace

std::vector<std::vector<size_t>> of(std::span<const uint64_t> hashes) {
    if (hashes.size() < 2) return {};
    return Grouping(hashes).groups();
}

} // namespace loftmere::LikenessGroups
