#include "CleanerCore/Platform/TreeWalk.h"

#include "CleanerCore/Platform/Directory.h"
#include "CleanerCore/Support/PathText.h"

#include <algorithm>
#include <vector>

namespace loftmere {

namespace {

// One folder of the way down: its path and what of it is still to be visited, last first.
struct Level {
    std::string path;
    std::vector<DirectoryEntry> remaining;
};

std::optional<Level> listed(const std::string& path) {
    auto entries = readDirectory(path);
    if (!entries) return std::nullopt;
    std::ranges::reverse(*entries);
    return Level{path, std::move(*entries)};
}

} // namespace

bool walkTree(const std::string& root, const std::function<WalkStep(const WalkEntry&)>& visit) {
    auto top = listed(root);
    if (!top) return false;
    std::vector<Level> way;
    way.push_back(std::move(*top));
    while (!way.empty()) {
        Level& level = way.back();
        if (level.remaining.empty()) {
            way.pop_back();
            continue;
        }
        const DirectoryEntry entry = std::move(level.remaining.back());
        level.remaining.pop_back();
        const std::string path = joinPath(level.path, entry.name);
        const WalkStep step = visit({path, entry.name, entry.type});
        if (step == WalkStep::stop) return true;
        if (step == WalkStep::skipDescendants || entry.type != FileType::directory) continue;
        if (auto below = listed(path)) way.push_back(std::move(*below));
    }
    return true;
}

} // namespace loftmere
