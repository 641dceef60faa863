#pragma once

#include "CleanerCore/Support/ByteCount.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace loftmere {

// What a volume is; a value is absent where the system cannot tell.
struct VolumeKind {
    std::optional<bool> isLocal;    // not a network's
    std::optional<bool> isInternal; // not on a removable or external device
};

VolumeKind volumeKind(const std::string& path);

// The bytes usable for important data of the volume that holds `path`, with what the system would purge to
// make room; absent when it cannot be read.
std::optional<int64_t> importantFreeSpace(const std::string& path);

// Total and free bytes of that volume, by the figures for important data where the system has them.
std::optional<VolumeSpace> volumeSpace(const std::string& path);

// The paths at which volumes are mounted, as the system lists them; what is mounted may be covered by another
// mount, or gone by now. Empty when they cannot be told.
std::vector<std::string> mountPoints();

} // namespace loftmere
