#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace loftmere::LikenessGroups {

// Pictures count as alike when their hashes differ in at most so many of 64 bits.
inline constexpr int maximumDistance = 6;

// Groups hashes that are alike, as indexes into `hashes`. Each hash in turn that is in no group yet takes
// every later one that is in no group yet and within `maximumDistance` of it; it takes none by way of
// another, so the order matters. Groups of fewer than two are left out. Groups stand in the order of their
// first members, members in ascending order. The cost stays near linear as long as hashes that are not alike
// are spread out; masses of equal or near-equal ones cost nothing extra. `isCancelled` is asked every few
// milliseconds; when it answers true, there are no groups.
std::vector<std::vector<size_t>> of(std::span<const uint64_t> hashes,
                                    const std::function<bool()>& isCancelled = nullptr);

} // namespace loftmere::LikenessGroups
