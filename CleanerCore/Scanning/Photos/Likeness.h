#pragma once

#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Platform/RegularFile.h"
#include "CleanerCore/Scanning/Photos/GreyImage.h"
#include "CleanerCore/Scanning/Photos/Thumbnail.h"

#include <cstddef>
#include <cstdint>
#include <expected>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace loftmere {

// What a picture looks like. Two pictures look alike when few bits of their hashes differ.
struct Likeness {
    uint64_t hash = 0;
    int64_t pixelCount = 0; // width times height
    bool operator==(const Likeness&) const = default;
};

// The likeness of a picture file, upright; a final link is followed. Absent when the file cannot be decoded,
// for whatever reason, and when `isCancelled` answers true meanwhile. Any thread. May take seconds for a
// large picture.
std::optional<Likeness> dHash(const std::string& path, const FS::CancelCheck& isCancelled = nullptr);

// The same for an open file, with the reason where there is none.
std::expected<Likeness, NoThumbnail> likenessOf(const RegularFile& file, const FS::CancelCheck& isCancelled);

// The likeness hash of a picture: stretched to 9 by 8 pixels, one bit for each pixel that is brighter than
// its right neighbour, from the top left in the highest bit to the bottom right in the lowest. A picture of
// one colour has the hash 0.
uint64_t differenceHash(const GreyImage& image);

namespace LikenessGroups {

// Pictures are alike when at most this many of the 64 bits differ.
inline constexpr int maximumDistance = 6;

// Groups similar hashes, as indexes into `hashes`. Each hash in turn that is not in a group yet takes every
// later one that is not in a group yet and within `maximumDistance` of it. It takes none by way of another,
// so the order matters. Groups of fewer than two are left out. Groups are in the order of their first
// members, members in ascending order. The cost is nearly linear while hashes that are not alike are spread
// out; many equal or nearly equal hashes cost nothing extra. `isCancelled` is asked every few milliseconds;
// when it answers true, there are no groups.
std::vector<std::vector<size_t>> of(std::span<const uint64_t> hashes,
                                    const std::function<bool()>& isCancelled = nullptr);

} // namespace LikenessGroups

} // namespace loftmere
