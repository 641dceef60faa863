#include "CleanerCore/Scanning/Photos/Likeness.h"

#include <gtest/gtest.h>

#include <bit>
#include <random>

using namespace loftmere;

namespace {

using Groups = std::vector<std::vector<size_t>>;

// The rule itself, pair by pair.
Groups naiveGroups(const std::vector<uint64_t>& hashes) {
    Groups groups;
    std::vector<bool> used(hashes.size());
    for (size_t i = 0; i < hashes.size(); ++i) {
        if (used[i]) continue;
        std::vector<size_t> group{i};
        for (size_t j = i + 1; j < hashes.size(); ++j) {
            if (!used[j] && std::popcount(hashes[i] ^ hashes[j]) <= 6) group.push_back(j);
        }
        if (group.size() < 2) continue;
        for (const size_t member : group) used[member] = true;
        groups.push_back(std::move(group));
    }
    return groups;
}

// Hashes around a few centres, with up to `spread` bits changed, so that most distances are near the limit.
std::vector<uint64_t> clustered(std::mt19937_64& random, size_t count, size_t centres, uint64_t mask,
                                int spread) {
    std::vector<uint64_t> middle(centres);
    for (uint64_t& hash : middle) hash = random() & mask;
    std::vector<uint64_t> hashes(count);
    for (uint64_t& hash : hashes) {
        hash = middle[random() % centres];
        for (int i = int(random() % unsigned(spread + 1)); i > 0; --i) hash ^= uint64_t{1} << (random() % 64);
    }
    return hashes;
}

} // namespace

TEST(PhotosGrouping, GivesTheGroupsOfThePairwiseRule) {
    std::mt19937_64 random(20);
    for (int round = 0; round < 60; ++round) {
        const uint64_t mask = round % 3 == 0 ? ~uint64_t{0} : round % 3 == 1 ? 0xFF00FF : uint64_t{0};
        const size_t count = round == 0 ? 0 : random() % 1500;
        const auto hashes = clustered(random, count, 1 + random() % 200, mask, 2 + round % 12);
        ASSERT_EQ(LikenessGroups::of(hashes), naiveGroups(hashes)) << "round " << round;
    }
}

// One piece of each hash is the same, so that every one must be compared with every other.
TEST(PhotosGrouping, CancelledInTheMiddleGivesNothing) {
    std::mt19937_64 random(9);
    std::vector<uint64_t> hashes{1, 1};
    while (hashes.size() < 6000) hashes.push_back(random() & 0x77BBDDEE77BBDDEE);
    int asked = 0;
    EXPECT_FALSE(LikenessGroups::of(hashes, [&] { return ++asked < 0; }).empty());
    const int times = asked;
    EXPECT_GT(times, 5);
    for (const int limit : {0, 3, times - 1}) {
        asked = 0;
        EXPECT_TRUE(LikenessGroups::of(hashes, [&] { return ++asked > limit; }).empty());
        EXPECT_EQ(asked, limit + 1);
    }
}
