#include "CleanerCore/Platform/Volume.h"

#include "CleanerCore/Platform/FileStatus.h"
#include "CleanerCore/Platform/linux/MountInfo.h"

#include <fmt/format.h>
#include <sys/statvfs.h>
#include <sys/sysmacros.h>
#include <sys/vfs.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <sstream>

namespace loftmere {

namespace {

// The magic numbers of file systems whose files are on another machine.
constexpr std::array<uint32_t, 8> networkFileSystems{
    0x6969,     // NFS
    0x517B,     // SMB
    0xFF534D42, // CIFS
    0xFE534D42, // SMB 2
    0x564C,     // NCP
    0x73757245, // Coda
    0x5346414F, // AFS
    0x01021997, // 9P
};

bool isOnNetwork(const struct statfs& raw) {
    return std::ranges::find(networkFileSystems, static_cast<uint32_t>(raw.f_type)) !=
           networkFileSystems.end();
}

// Whether the kernel calls the block device removable. For a partition, its parent's folder says so.
std::optional<bool> isRemovable(uint64_t device) {
    const std::string folder = fmt::format("/sys/dev/block/{}:{}/", major(device), minor(device));
    for (const char* place : {"removable", "../removable"}) {
        std::ifstream file(folder + place);
        char answer = 0;
        if (file >> answer) return answer == '1';
    }
    return std::nullopt;
}

bool isOctal(char c) {
    return c >= '0' && c <= '7';
}

// The kernel writes characters that would break its columns as a backslash and three octal digits.
std::string unescaped(const std::string& field) {
    std::string text;
    for (size_t i = 0; i < field.size(); ++i) {
        const bool isEscape = field[i] == '\\' && i + 3 < field.size() && isOctal(field[i + 1]) &&
                              isOctal(field[i + 2]) && isOctal(field[i + 3]);
        if (isEscape) {
            text += static_cast<char>((field[i + 1] - '0') * 64 + (field[i + 2] - '0') * 8 +
                                      (field[i + 3] - '0'));
            i += 3;
        } else {
            text += field[i];
        }
    }
    return text;
}

// Cut off at an embedded NUL, it would be another path than the one named.
bool namesNothing(const std::string& path) {
    return path.find('\0') != std::string::npos;
}

} // namespace

VolumeKind volumeKind(const std::string& path) {
    struct statfs raw{};
    if (namesNothing(path) || ::statfs(path.c_str(), &raw) != 0) return {};
    VolumeKind kind{.isLocal = !isOnNetwork(raw), .isInternal = std::nullopt};
    const auto status = targetStatus(path);
    if (!status) return kind;
    if (const auto removable = isRemovable(status->device)) kind.isInternal = !*removable;
    return kind;
}

std::vector<std::string> mountPoints() {
    std::ostringstream text;
    text << std::ifstream("/proc/self/mountinfo").rdbuf();
    return mountPointsIn(text.str());
}

std::vector<std::string> mountPointsIn(const std::string& mountInfo) {
    std::vector<std::string> points;
    std::istringstream lines(mountInfo);
    for (std::string line; std::getline(lines, line);) {
        std::istringstream fields(line);
        std::string id, parent, device, root, point;
        if (fields >> id >> parent >> device >> root >> point) points.push_back(unescaped(point));
    }
    return points;
}

std::optional<int64_t> importantFreeSpace(const std::string& path) {
    const auto space = volumeSpace(path);
    if (!space) return std::nullopt;
    return space->free;
}

std::optional<VolumeSpace> volumeSpace(const std::string& path) {
    struct statvfs raw{};
    if (namesNothing(path) || ::statvfs(path.c_str(), &raw) != 0) return std::nullopt;
    const auto block = static_cast<int64_t>(raw.f_frsize);
    return VolumeSpace{.total = static_cast<int64_t>(raw.f_blocks) * block,
                       .free = static_cast<int64_t>(raw.f_bavail) * block};
}

} // namespace loftmere
