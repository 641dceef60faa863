#pragma once

#include "CleanerCore/Platform/FileStatus.h"

#include <cstdint>
#include <expected>
#include <functional>
#include <string>
#include <string_view>

// Walks over everything below a folder. Links are never followed, and what cannot be read or vanishes in the
// meantime is passed over. Open descriptors stay bounded however wide or deep the tree is. Any thread.
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

// Visits everything below `root` in turn, links and hidden entries too: a folder before what it holds, and
// mostly right after its siblings. Path, name and descriptor last for the visit. False when `root` is no
// folder that can be read, links followed. The calling thread does all the work and makes all calls. Memory
// holds the names of the folders that are still to be visited.
bool walkTree(const std::string& root, const std::function<WalkStep(const WalkEntry&)>& visit);

// Bytes really taken on disk by all regular files below a real folder; each name of a hard-linked file
// counts. Nothing but folders is opened. 0 when `folder` is no folder that can be read; a link to one is
// none.
//
// `cancel` is asked at every 2000th entry, before that entry is added, on any thread but never on two at
// once. Once it answers true it is not asked again, and the total so far is the result. It must not throw.
//
// The calling thread works; where there is much to look into, helpers join it. A wide folder takes a fixed
// amount of memory; deep down, each folder on the way holds the names of its subfolders.
int64_t allocatedBelow(const std::string& folder, const std::function<bool()>& cancel = nullptr);

} // namespace loftmere
