#include "CleanerCore/Removal/CloudFiles.h"

#include "CleanerCore/Platform/CloudStorage.h"
#include "CleanerCore/Removal/PathKey.h"
#include "CleanerCore/Removal/SafetyPolicy.h"
#include "CleanerCore/Support/PathText.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <thread>

namespace loftmere::CloudFiles {

namespace {

constexpr const char* unnamedProvider = "your cloud drive";

// What cannot be looked at is not taken for removed.
bool isThere(const Place& place) {
    const auto status = place.status();
    return status || (status.error() != ENOENT && status.error() != ENOTDIR);
}

void pauseBefore(int round) {
    if (round > 0)
        std::this_thread::sleep_for(std::chrono::milliseconds(250) * (1 << std::min(round - 1, 16)));
}

} // namespace

std::array<std::string, 2> syncRoots(const std::string& home) {
    return {home + "/Library/Mobile Documents", home + "/Library/CloudStorage"};
}

bool isSynced(const std::string& path, const std::string& home) {
    const PathKey key(SafetyPolicy::normalize(path, home));
    return std::ranges::any_of(syncRoots(home),
                               [&](const std::string& root) { return key.isAtOrUnder(PathKey(root)); });
}

std::string providerName(const std::string& path, const std::string& home) {
    const PathKey key(SafetyPolicy::normalize(path, home));
    const auto [mobileDocuments, cloudStorage] = syncRoots(home);
    if (key.isAtOrUnder(PathKey(mobileDocuments))) return "iCloud Drive";
    if (!key.isAtOrUnder(PathKey(cloudStorage))) return unnamedProvider;
    const std::string below = key.below(PathKey(cloudStorage));
    const std::string name = below.substr(0, below.find_first_of("-/"));
    return name.empty() ? unnamedProvider : name;
}

bool isDataless(const Place& place) {
    const auto isLocal = CloudStorage::isContentLocal(place.realPath());
    return isLocal ? !*isLocal : !isThere(place);
}

Place placeholder(const Place& place) {
    return place.beside("." + place.name() + ".icloud");
}

Status remove(const Place& place, int attempts) {
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

} // namespace loftmere::CloudFiles
