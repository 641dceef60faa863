#pragma once

#include "CleanerCore/Platform/FileStatus.h"

#include <expected>
#include <functional>
#include <string>
#include <string_view>

namespace loftmere {

struct WalkEntry {
    const std::string&
        path; // the root as it was given, "/" and the way down; may be longer than the system takes
    std::string_view name; // the bytes on disk, not always valid UTF-8; the end of `path`
    FileType type;
    int folder; // the descriptor of the folder that holds it, open during the visit

    // The item itself, a link not followed, however long its path is; the errno value on failure.
    std::expected<FileStatus, int> status() const;
};

enum class WalkStep { proceed, skipDescendants, stop };

// Visits everything below `root` in turn, a folder before what it holds and mostly right after its siblings.
// Links are told and never followed, hidden entries are told too, unreadable folders are passed over. Path,
// name and descriptor last for the visit. False when `root` is no folder that can be read, links followed.
// The calling thread does all the work and makes all calls. Open descriptors stay bounded however wide or
// deep the tree is; memory holds the names of the folders that are still to be visited.
bool walkTree(const std::string& root, const std::function<WalkStep(const WalkEntry&)>& visit);

} // namespace loftmere
