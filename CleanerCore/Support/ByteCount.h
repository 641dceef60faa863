#pragma once

#include <cstdint>
#include <string>

namespace loftmere {

// Adds to a count of bytes, which stops at the least and the greatest value there is instead of overflowing.
// A sparse file may claim nearly all of it, and two of them more.
void addBytes(int64_t& sum, int64_t bytes);

namespace ByteFormat {

// A byte count as every screen shows it, in decimal units and English: "Zero KB", "1 byte", "999 bytes",
// "12 KB", "1.5 MB", "1.25 GB". KB has no decimals, MB at most one, GB and above at most two.
std::string string(int64_t bytes);

} // namespace ByteFormat

// The bytes of a volume.
struct VolumeSpace {
    int64_t total = 0;
    int64_t free = 0;

    // 1.0 when `total` is below 1, so that an unreadable volume never looks full.
    double freeFraction() const {
        return total < 1 ? 1.0 : static_cast<double>(free) / static_cast<double>(total);
    }
    int64_t used() const { return total - free; }

    bool operator==(const VolumeSpace&) const = default;
};

} // namespace loftmere
