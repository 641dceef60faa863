#pragma once

#include "CleanerCore/Support/ByteCount.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace loftmere {

// What kind of volume it is. A value is absent where the system does not know.
struct VolumeKind {
    std::optional<bool> isLocal;    // not on a network
    std::optional<bool> isInternal; // not on a removable or external device
};

VolumeKind volumeKind(const std::string& path);

// The bytes that important data could take on the volume that holds `path`, including what the system would
// purge to make room. Absent when it cannot be read.
std::optional<int64_t> importantFreeSpace(const std::string& path);

// Total and free bytes of that volume; the figures for important data where the system has them.
std::optional<VolumeSpace> volumeSpace(const std::string& path);

// The paths at which volumes are mounted, as the system lists them. A volume may be covered by another mount,
// or be gone by now. Empty when they cannot be read.
std::vector<std::string> mountPoints();

} // namespace loftmere
