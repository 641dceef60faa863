#pragma once

#include "CleanerCore/Platform/TreeWalk.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

namespace loftmere {

// A file that may be a photograph, found by its name.
struct PhotoFile {
    std::string path;
    FileStatus status;
    size_t content =
        0; // the index of the first file found that is the same one under another name, else its own
};

// Gathers the regular files with one of the extensions, in order of discovery.
class PhotoFiles {
public:
    // Asked for each visible entry before it is looked at; false ends the walk.
    using Visit = std::function<bool(const std::string& path)>;

    // Adds what is visible below a folder. A folder that cannot be read adds nothing; a file that was reached
    // before by the same way on disk is not added again, though `root` may lead there through a link. False
    // when `visit` has ended the walk.
    bool add(const std::string& root, std::span<const std::string_view> extensions, const Visit& visit);

    const std::vector<PhotoFile>& files() const { return files_; }

private:
    void addFile(const WalkEntry& entry);
    bool isNewName(const std::string& path);

    std::vector<PhotoFile> files_;
    std::map<std::pair<uint64_t, uint64_t>, size_t> known_; // device and inode of each
    std::unordered_set<std::string> names_;                 // the real paths of files that have several
};

} // namespace loftmere
