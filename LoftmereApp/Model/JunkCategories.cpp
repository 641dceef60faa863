#include "LoftmereApp/Model/JunkCategories.h"

#include <algorithm>
#include <array>

namespace loftmere {

namespace {

using enum CleanCategory;

constexpr std::array junk{
    userCaches, logs,       crashReports,     trash,         savedAppState, mailDownloads,
    xcode,      simulators, projectArtifacts, packageCaches, docker,
};

} // namespace

std::span<const CleanCategory> junkCategories() {
    return junk;
}

bool isJunk(CleanCategory category) {
    return std::ranges::find(junk, category) != junk.end();
}

} // namespace loftmere
