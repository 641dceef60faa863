#pragma once

#include <cstdint>

namespace loftmere {

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
