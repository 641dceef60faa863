#include "CleanerCore/Removal/Cleaning/Doors.h"

#include "CleanerCore/Platform/CloudStorage.h"
#include "CleanerCore/Platform/Removal.h"
#include "CleanerCore/Process/Shell.h"
#include "CleanerCore/Safety/CloudPaths.h"
#include "CleanerCore/Support/PathText.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <thread>

namespace loftmere {

namespace {

constexpr int cloudAttempts = 4;
constexpr double toolLimit = 60; // seconds
constexpr const char* providerTool = "fileproviderctl";
constexpr const char* iCloudTool = "brctl";

// An item that cannot be looked at does not count as removed.
bool isThere(const Place& place) {
    const auto status = place.status();
    return status || (status.error() != ENOENT && status.error() != ENOTDIR);
}

void pauseBefore(int round) {
    if (round > 0)
        std::this_thread::sleep_for(std::chrono::milliseconds(250) * (1 << std::min(round - 1, 16)));
}

Status couldNotEvict(const std::string& detail) {
    return failed(Failure::saying("Could not remove local copy: " + detail));
}

Status evictFromProvider(const std::string& path) {
    const auto result = Shell::run(providerTool, {"evict", path}, toolLimit);
    if (result.ok()) return {};
    return couldNotEvict(result.err.empty() ? "provider refused" : result.err);
}

Status evictFromICloud(const std::string& path) {
    const auto released = CloudStorage::evict(path);
    if (released || Shell::run(iCloudTool, {"evict", path}, toolLimit).ok()) return {};
    return couldNotEvict(released.error().message);
}

} // namespace

Status removeForGood(const ClearedItem& item) {
    const Place& place = item.place();
    Status removed = item.provider() ? CloudFiles::remove(item, cloudAttempts) : removeItem(place);
    if (!removed || !place.status()) return removed;
    return failed(Failure::saying(
        fmt::format("{} reported success but is still on disk — the drive may be read-only", place.name())));
}

Status moveToTrash(const ClearedItem& item, const std::string& home) {
    return item.provider() ? CloudFiles::remove(item, cloudAttempts) : trashItem(item.place(), home);
}

bool CloudFiles::isDataless(const Place& place) {
    const auto isLocal = CloudStorage::isContentLocal(place.realPath());
    return isLocal ? !*isLocal : !isThere(place);
}

Place CloudFiles::placeholder(const Place& place) {
    return place.beside("." + place.name() + ".icloud");
}

Status CloudFiles::remove(const ClearedItem& item, int attempts) {
    const Place& place = item.place();
    const Place left = placeholder(place);
    Status last = failed(Failure::posix(ENOENT, "remove", place.realPath()));
    for (int round = 0; round < std::max(attempts, 1); ++round) {
        pauseBefore(round);
        auto removed = CloudStorage::coordinatedRemove(place);
        if (removed && !isThere(place)) return {};
        if (!removed) last = std::move(removed);
        if (isThere(left)) {
            auto cleared = CloudStorage::coordinatedRemove(left);
            if (!cleared) last = std::move(cleared);
        }
        if (!isThere(place) && !isThere(left)) return {};
    }
    return last;
}

Status CloudEvictor::evict(const RemovalPermit& /*permit*/, const std::string& path, const Paths& paths) {
    if (auto may = mayEvict(path, paths); !may) return may;
    return isInICloud(path, paths) ? evictFromICloud(path) : evictFromProvider(path);
}

Status CloudEvictor::mayEvict(const std::string& path, const Paths& paths) {
    const auto holdsPath = [&](const std::string& root) { return isAtOrUnder(path, root); };
    if (!std::ranges::any_of(cloudRoots(paths), holdsPath)) {
        return failed(Failure::saying("Not inside iCloud Drive or a cloud storage folder"));
    }
    if (!isInICloud(path, paths)) {
        return Shell::which(providerTool) ? Status{}
                                          : couldNotEvict(fmt::format("{} not found", providerTool));
    }
    const auto released = CloudStorage::mayEvict();
    return released || Shell::which(iCloudTool) ? Status{} : couldNotEvict(released.error().message);
}

} // namespace loftmere
