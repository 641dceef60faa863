#include "CleanerCore/Removal/SpaceReserve.h"

#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Platform/FileContent.h"
#include "CleanerCore/Platform/Removal.h"
#include "CleanerCore/Support/PathText.h"

#include <algorithm>
#include <cerrno>
#include <random>

namespace loftmere {

namespace {

constexpr int64_t reservedBytes = int64_t{4} << 20; // the manifests of some ten thousand items
constexpr int64_t plenty = 8 * reservedBytes;       // less than that is not ours to put by

// Bytes that no file system can store in less space.
std::string filling() {
    std::mt19937_64 random(1);
    std::string bytes(reservedBytes, '\0');
    std::ranges::generate(bytes, [&] { return static_cast<char>(random()); });
    return bytes;
}

} // namespace

bool isDiskFull(const Failure& failure) {
    return failure.domain == FailureDomain::posix && (failure.code == ENOSPC || failure.code == EDQUOT);
}

SpaceReserve::SpaceReserve(const Paths& paths) : file_(paths.supportDir() + "/quarantine.reserve") {}

void SpaceReserve::keep() const {
    if (FS::exists(file_)) return;
    const auto space = FS::volumeSpace(parentPath(file_));
    if (space && space->free >= plenty) (void)replaceFile(file_, filling(), 0600);
}

bool SpaceReserve::spend() const {
    const auto place = Place::open(file_);
    return place && removeItem(*place).has_value();
}

} // namespace loftmere
