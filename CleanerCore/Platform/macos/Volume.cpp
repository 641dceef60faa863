#include "CleanerCore/Platform/Volume.h"

#include <sys/mount.h>

namespace loftmere {

namespace {

// Cut off at an embedded NUL, it would be another path than the one named.
bool namesNothing(const std::string& path) {
    return path.find('\0') != std::string::npos;
}

} // namespace

VolumeKind volumeKind(const std::string& path) {
    struct statfs raw{};
    if (namesNothing(path) || ::statfs(path.c_str(), &raw) != 0) return {};
    VolumeKind kind;
    kind.isLocal = (raw.f_flags & MNT_LOCAL) != 0;
    if ((raw.f_flags & MNT_REMOVABLE) != 0) kind.isInternal = false;
    return kind;
}

std::vector<std::string> mountPoints() {
    const int count = ::getfsstat(nullptr, 0, MNT_NOWAIT);
    if (count <= 0) return {};
    std::vector<struct statfs> volumes(static_cast<size_t>(count));
    const auto size = static_cast<int>(volumes.size() * sizeof(struct statfs));
    const int filled = ::getfsstat(volumes.data(), size, MNT_NOWAIT);
    std::vector<std::string> points;
    for (int i = 0; i < filled; ++i) points.emplace_back(volumes[static_cast<size_t>(i)].f_mntonname);
    return points;
}

std::optional<int64_t> importantFreeSpace(const std::string& path) {
    const auto space = volumeSpace(path);
    if (!space) return std::nullopt;
    return space->free;
}

std::optional<VolumeSpace> volumeSpace(const std::string& path) {
    struct statfs raw{};
    if (namesNothing(path) || ::statfs(path.c_str(), &raw) != 0) return std::nullopt;
    const auto block = static_cast<int64_t>(raw.f_bsize);
    return VolumeSpace{.total = static_cast<int64_t>(raw.f_blocks) * block,
                       .free = static_cast<int64_t>(raw.f_bavail) * block};
}

} // namespace loftmere
