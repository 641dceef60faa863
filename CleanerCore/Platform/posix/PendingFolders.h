#pragma once

#include "CleanerCore/Platform/FileDescriptor.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace loftmere {

// Opens a real folder for reading: no final link, and nothing but a folder. Its access date does not change.
FileDescriptor openListedFolder(int folder, const char* name);

// Names one after the other, each ended by NUL: one allocation for many.
class PackedNames {
public:
    void add(std::string_view name) { bytes_.append(name).push_back('\0'), ++count_; }
    bool empty() const { return count_ == 0; }
    size_t count() const { return count_; }
    std::string takeFirst();

private:
    std::string bytes_;
    size_t begin_ = 0;
    size_t count_ = 0;
};

// The folders of a tree that a walk must still look into, deepest first. Subfolders are kept by name,
// relative to their folder's descriptor. Only a limited number of the waiting folders stays open; the others
// are found again on the way down from the root, never through a link. So neither the depth of a tree nor the
// length of its paths matters.
//
// Not for several threads at once: those who share it lock.
class PendingFolders {
public:
    using Folder = std::shared_ptr<const FileDescriptor>;

    // What to do next: open the subfolder `name` of `folder` or, without a name, go on reading `folder`
    // itself.
    struct Task {
        int node = 0; // of `folder`
        Folder folder;
        std::string name;
        size_t pathLength = 0; // of the folder's path with a final "/", counted from that of the root
    };

    // The first task is to read the root. `rootPathLength` is where path lengths begin.
    explicit PendingFolders(FileDescriptor root, size_t rootPathLength = 0);

    bool empty() const { return units_.empty(); }

    // About how many folders wait; a folder that is read only in part counts for several.
    size_t amount() const { return amount_; }

    // Takes the next task. Absent when its folder has vanished; ask again unless empty.
    std::optional<Task> take();

    // Whether the rest of a folder may be left for later, which keeps it open.
    bool canDefer() const { return open_ < openLimit / 2; }

    // Hands in what was found in the folder that `task` led to and that was opened as `folder`: that there is
    // more to read in it, and its subfolders. Both make `task` be about that folder from then on.
    void addRest(Task& task, const Folder& folder);
    void addSubfolders(Task& task, const Folder& folder, PackedNames names);

    // Every task taken must be finished once, after everything that it led to was handed in.
    void finish(const Task& task);

private:
    static constexpr size_t openLimit = 64;
    static constexpr size_t restWorth = 32;
    static constexpr int rootNode = 0; // always open

    // A folder that waits for something, or that is on the way to such a folder.
    struct Node {
        int parent = -1;
        int users = 0;   // units, tasks and nodes below it
        int waiting = 0; // units
        bool isPartlyRead = false;
        size_t pathLength = 0;
        std::string name;
        Folder folder;
    };

    struct Unit {
        int node = 0;
        PackedNames names; // empty: there is more to read in the folder itself
    };

    int enter(Task& task, const Folder& folder);
    void push(int node, PackedNames names);
    void pop();
    void release(int node);
    void keepOpen(int node, const Folder& folder);
    void close(int node);
    void closeShallowest();
    bool reopen(int node);

    std::vector<Node> nodes_;
    std::vector<int> freeNodes_;
    std::vector<Unit> units_;
    size_t amount_ = 0;
    size_t open_ = 0;
    size_t closedBelow_ = 0; // no unit under this index can be closed
};

} // namespace loftmere
