#pragma once

#include "CleanerCore/Platform/FileStatus.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

namespace loftmere {

// A file as a walk found it. `status` later shows whether it is still the same.
struct ListedFile {
    std::string path;
    FileStatus status;

    int64_t size() const { return status.size; } // logical bytes
};

class ComparedFile;

// Splits files of one size into sets of equal content. The files are read in step and their bytes compared,
// so a file is read no further than where it differs from all others. The memory needed does not depend on
// the size of the files. Names of one inode are read once. One thread at a time.
class ContentGroups {
public:
    using Set = std::vector<const ListedFile*>;

    // Called with each file before a part of it is read, several times for a large one. False ends the work.
    using Proceed = std::function<bool(const std::string& path)>;

    // `openFiles` is how many files may be held open at once. One more is opened for a moment where there are
    // more to compare.
    ContentGroups(size_t openFiles, Proceed proceed);

    // The sets of two or more. `files` point into one list, in its order, and so do the files of a set. A
    // file that cannot be read, or that changes meanwhile, drops out and the others go on. Once `proceed` has
    // answered false, the result is the sets that are proved by then.
    std::vector<Set> split(std::span<const ListedFile* const> files);

private:
    // Files that are equal up to `offset`.
    struct Alike {
        std::vector<ComparedFile*> members;
        int64_t offset = 0;
    };
    struct Differing {
        ComparedFile* file;
        size_t hash; // of the block in which it differs
    };

    bool proveEqual(Alike& alike);
    void compareBlock(Alike& alike);
    void setAside(std::vector<Differing> differing, int64_t offset);
    bool read(ComparedFile& file, int64_t offset, std::span<std::byte> block);
    void release(ComparedFile& file);

    size_t freeHandles_;
    Proceed proceed_;
    std::vector<std::byte> model_;
    std::vector<std::byte> other_;
    int64_t size_ = 0;
    std::vector<Alike> pending_;
    bool stopped_ = false;
};

} // namespace loftmere
