#include "CleanerCore/Platform/Removal.h"

#include "CleanerCore/Platform/posix/Calls.h"
#include "CleanerCore/Platform/posix/FileSystem.h"
#include "CleanerCore/Platform/posix/RemovalParts.h"
#include "CleanerCore/Support/PathText.h"
#include "CleanerCore/Support/Text.h"

#include <fmt/format.h>

#include <algorithm>

namespace loftmere {

namespace {

constexpr int mostTurns = 100000;
constexpr size_t longestName = 255;
constexpr size_t longestExtension = 32; // anything longer is no extension but part of the name

// The name to be tried at the n-th turn, of at most `size` bytes.
std::string numberedName(const std::string& name, int turn, size_t size) {
    if (turn == 1 && name.size() <= size) return name;
    std::string extension = pathExtension(name);
    if (extension.size() > longestExtension) extension.clear();
    const std::string tail =
        (turn == 1 ? "" : " " + std::to_string(turn)) + (extension.empty() ? "" : ".") + extension;
    const size_t stem = name.size() - (extension.empty() ? 0 : extension.size() + 1);
    return std::string(wholeCharacters(name, std::min(stem, size - tail.size()))) + tail;
}

Result<Place> inTrashFolder(const Place& place, const std::string& home) {
    return Place::open(joinPath(home, ".Trash/" + place.name()));
}

Status mayChange(const Place& place, std::string_view action) {
    if (place.isReadOnly()) return failed(Failure::posix(EROFS, action, place.realPath()));
    if (place.isMountPoint()) return failed(mountedThere(action, place.realPath()));
    return {};
}

} // namespace

Status removeItem(const Place& place) {
    // The quick way for everything that is no folder. For a folder, systems answer one or the other.
    if (calls::unlink(place.folder(), place.name().c_str(), 0) == 0) return {};
    const int error = errno;
    if (error == EISDIR || error == EPERM) {
        const auto status = place.status();
        if (status && status->type == FileType::directory) return removeTree(place);
    }
    return failed(Failure::posix(error, "delete", place.realPath()));
}

Status moveItem(const Place& from, const Place& to) {
    const int answer =
        renameExclusivelyAt(from.folder(), from.name().c_str(), to.folder(), to.name().c_str());
    if (answer == 0) return {};
    return failed(Failure::posix(errno, "move", from.realPath()));
}

Status trashItem(const Place& place, const std::string& home) {
    auto inTrash = inTrashFolder(place, home);
    if (!inTrash) return moveToOtherTrash(place, home, std::move(inTrash.error()));
    return underFreeName(place.name(), 0,
                         [&](const std::string& name) { return moveItem(place, inTrash->beside(name)); });
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

Status mayTrashItem(const Place& place, const std::string& home) {
    const auto inTrash = inTrashFolder(place, home);
    return inTrash ? mayMoveItem(place, *inTrash) : mayMoveToOtherTrash(place, home);
}

Failure mountedThere(std::string_view action, const std::string& path) {
    Failure failure = Failure::posix(EXDEV, action, path);
    failure.message =
        fmt::format("Could not {} {}: another volume is mounted there", action, printable(path));
    return failure;
}

Status underFreeName(const std::string& name, size_t spare,
                     const std::function<Status(const std::string&)>& attempt) {
    for (int turn = 1;; ++turn) {
        Status done = attempt(numberedName(name, turn, longestName - spare));
        const bool isTaken =
            !done && done.error().domain == FailureDomain::posix && done.error().code == EEXIST;
        if (!isTaken || turn == mostTurns) return done;
    }
}

} // namespace loftmere
