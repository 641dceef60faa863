#include "CleanerCore/Removal/CloudFiles.h"

#include "CleanerCore/Platform/CloudStorage.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <thread>

namespace loftmere::CloudFiles {

namespace {

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
