#include "CleanerCore/Platform/posix/VolumeLimits.h"

#include "CleanerCore/Platform/Removal.h"
#include "CleanerCore/Support/PathText.h"
#include "CleanerCore/Support/Text.h"

#include <fmt/format.h>

#include <cerrno>

namespace loftmere {

namespace {

Status mayChange(const Place& place, std::string_view action) {
    if (place.isReadOnly()) return failed(Failure::posix(EROFS, action, place.realPath()));
    if (place.isMountPoint()) return failed(mountedThere(action, place.realPath()));
    return {};
}

} // namespace

Failure mountedThere(std::string_view action, const std::string& path) {
    Failure failure = Failure::posix(EXDEV, action, path);
    failure.message =
        fmt::format("Could not {} {}: another volume is mounted there", action, printable(path));
    return failure;
}

Status mayRemoveItem(const Place& place, const std::vector<std::string>& mountPoints) {
    if (auto may = mayChange(place, "delete"); !may) return may;
    for (const std::string& point : mountPoints) {
        if (!isAtOrUnder(point, place.realPath())) continue;
        const auto mounted = Place::open(point);
        if (mounted && mounted->isMountPoint()) return failed(mountedThere("delete", point));
    }
    return {};
}

Status mayMoveItem(const Place& from, const Place& to) {
    if (from.isOnAnotherVolume(to)) return failed(Failure::posix(EXDEV, "move", from.realPath()));
    return mayChange(from, "move");
}

} // namespace loftmere
