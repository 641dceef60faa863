#pragma once

#include "CleanerCore/Platform/Directory.h"
#include "CleanerCore/Support/Crew.h"

#include <condition_variable>
#include <functional>
#include <list>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace loftmere {

// A depth-first walk over folders that hands out each of them listed, in the order of a walk that lists one
// after the other: of the folders to go into, the last comes first. Helpers list what comes next, some dozens
// of folders at a time, so that warm the processors share the work and cold the disk has several requests in
// hand. What they list ahead is bounded. One thread walks.
class ListingAhead {
public:
    struct Folder {
        std::string path;
        int depth = 0;                            // 0 for the folders that the walk began with
        std::vector<DirectoryEntry> entries = {}; // as `FS::entries` gives them
    };

    // Which folders, given by their entry and by the depth of the folder that holds it, are walked into.
    // Called from any thread, as is `isCancelled`.
    using Enters = std::function<bool(const DirectoryEntry&, int depth)>;

    ListingAhead(std::vector<std::string> roots, Enters enters, std::function<bool()> isCancelled);
    ~ListingAhead(); // waits for the listing in hand, no more
    ListingAhead(const ListingAhead&) = delete;
    ListingAhead& operator=(const ListingAhead&) = delete;

    // The next folder, listed. Absent at the end and after a cancel.
    std::optional<Folder> next();

private:
    // A piece of the walk's stack: what is still to be listed, last one first, and what was.
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
    std::vector<Folder> listed_; // of the branch in hand
    size_t nextListed_ = 0;

    std::mutex lock_; // over all below
    std::condition_variable changed_;
    Branches branches_; // the next one last
    Turns turns_;       // those of them that are not listed yet, in the same order
    size_t entriesAhead_ = 0;
    bool isOver_ = false;
    Crew helpers_{[this] { help(); }};
};

} // namespace loftmere
