#pragma once

#include "CleanerCore/Platform/FileStatus.h"

#include <functional>
#include <string>
#include <string_view>

namespace loftmere {

struct WalkEntry {
    const std::string& path; // the root as it was given, "/" and the way down
    std::string_view name;   // the bytes on disk, not always valid UTF-8
    FileType type;
};

enum class WalkStep { proceed, skipDescendants, stop };

// Visits everything below `root` in turn, a folder before what it holds. Links are told and never followed,
// hidden entries are told too, unreadable folders are passed over. False when `root` is no folder that can be
// read, links followed. The calling thread does all the work and makes all calls.
bool walkTree(const std::string& root, const std::function<WalkStep(const WalkEntry&)>& visit);

} // namespace loftmere
