#include "CleanerCore/Removal/Quarantine/SpaceReserve.h"

#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Platform/FileContent.h"
#include "CleanerCore/Platform/Removal.h"
#include "CleanerCore/Support/PathText.h"

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <string>

namespace loftmere {

namespace {

constexpr size_t reservedBytes = size_t{4} << 20;                // the manifests of some ten thousand items
constexpr auto plenty = static_cast<int64_t>(8 * reservedBytes); // less than that is not ours to put by

// Bytes that no file system can store in less space.
std::string filling() {
    std::string bytes(reservedBytes, '\0');
    uint64_t word = 1;
    for (size_t at = 0; at < bytes.size(); at += sizeof word) {
        word = word * 6364136223846793005U + 1442695040888963407U;
        std::memcpy(bytes.data() + at, &word, sizeof word);
    }
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
