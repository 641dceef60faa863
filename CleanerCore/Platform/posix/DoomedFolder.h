#pragma once

#include "CleanerCore/Platform/posix/FileDescriptor.h"

#include <dirent.h>
#include <sys/stat.h>

#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace loftmere {

// One folder of a tree that is being deleted. The thread that entered it reads it; any other may only open
// its subfolders and take away those that are done.
struct DoomedFolder : std::enable_shared_from_this<DoomedFolder> {
    using Stream = std::unique_ptr<DIR, int (*)(DIR*)>;

    DoomedFolder(std::shared_ptr<DoomedFolder> above, std::string itsName);

    // The base of calls relative to the folder; -1 while it is closed.
    int descriptor() const;

    // Reads from this descriptor from now on. False when it cannot be read.
    bool attach(FileDescriptor folder);

    // Gives the descriptor back for a while; the folder can be reached again from one of its subfolders.
    void close();

    // Opens a closed folder again through the subfolder `inner`. False when that has been moved elsewhere:
    // then the way back is lost.
    bool reopenFrom(const DoomedFolder& inner);

    // Gives its owner the right to change the folder, unless that was done before. False when the right is
    // not missing or is not ours to give.
    bool makeWritable();

    // Undoes makeWritable, for a folder that stays.
    void restoreMode() const;

    std::shared_ptr<DoomedFolder> parent; // null above the root of the tree
    std::string name;
    size_t depth = 0;

    Stream stream{nullptr, ::closedir};
    std::vector<std::string> subfolders; // read and not yet entered
    bool isRead = false;                 // nothing more comes from the stream
    int passes = 1;
    std::atomic<size_t> removed = 0; // entries taken away in this pass

    // Who still works in here: the thread that entered it, and each subfolder that is entered or given away.
    std::atomic<int> workers = 1;
    bool isSettled = false; // deleted, or known to stay

    struct stat identity{}; // told while it is closed
    std::optional<mode_t> formerMode;
};

// Opens the folder `name` of `parent` for deletion, giving both the rights for it where they are ours. errno
// tells why an answer holds no descriptor. `formerMode` receives what a folder without rights had.
FileDescriptor openDoomed(int parent, const char* name, std::optional<mode_t>& formerMode);

} // namespace loftmere
