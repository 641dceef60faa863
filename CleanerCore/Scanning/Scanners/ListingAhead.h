#pragma once

#include "CleanerCore/Platform/FileStatus.h"
#include "CleanerCore/Support/Crew.h"

#include <condition_variable>
#include <functional>
#include <list>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace loftmere {

// A depth-first walk that returns each folder with its entries. The order is that of a walk that lists one
// folder after the other: of the folders to enter, the last comes first. Helpers list what comes next, some
// dozens of folders at a time. So the processors share the work when the folders are in memory, and otherwise
// the disk has several requests at once. How far they list ahead is limited. One thread walks.
class ListingAhead {
public:
    struct Folder {
        std::string path;
        int depth = 0;                            // 0 for the folders that the walk starts with
        std::vector<DirectoryEntry> entries = {}; // as `FS::entries` returns them
    };

    // Whether to enter a folder, given its entry and the depth of the folder that holds it. Called on any
    // thread, as is `isCancelled`.
    using Enters = std::function<bool(const DirectoryEntry&, int depth)>;

    ListingAhead(std::vector<std::string> roots, Enters enters, std::function<bool()> isCancelled);
    ~ListingAhead(); // waits only for the listings that have begun
    ListingAhead(const ListingAhead&) = delete;
    ListingAhead& operator=(const ListingAhead&) = delete;

    // The next folder. Absent at the end and after a cancel.
    std::optional<Folder> next();

private:
    // A piece of the walk's stack: the folders still to list, the last one first, and those already listed.
    struct Branch {
        enum class State { waiting, inHand, listed };
        std::vector<Folder> pending;
        std::vector<Folder> listed = {};
        size_t entryCount = 0;
        State state = State::waiting;
    };
    using Branches = std::list<Branch>;
    using Turns = std::list<Branches::iterator>;

    void takeBranch();
    std::optional<Turns::iterator> claim(size_t mostEntries);
    void list(Turns::iterator turn, std::unique_lock<std::mutex>& guard);
    void listNext(Branch& branch) const;
    void insert(Branches::iterator above, Turns::iterator turn, std::vector<Folder> pending);
    void callHelpers();
    void help();

    const Enters enters_;
    const std::function<bool()> isCancelled_;
    std::vector<Folder> listed_; // of the current branch
    size_t nextListed_ = 0;

    std::mutex lock_; // for all below
    std::condition_variable changed_;
    Branches branches_; // the next one is the last
    Turns turns_;       // the branches that are not listed yet, in the same order
    size_t entriesAhead_ = 0;
    bool isOver_ = false;
    Crew helpers_{[this] { help(); }};
};

} // namespace loftmere
