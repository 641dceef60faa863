#pragma once

#include "CleanerCore/Platform/Directory.h"

#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace loftmere {

// The folders that a depth-first walk has still to list. While the walk works on one, helpers read those that
// come next, so that it seldom waits for the disk. What they read is bounded. The order is the walk's own:
// the folder pushed last comes first. One thread walks.
class ListingAhead {
public:
    struct Folder {
        std::string path;
        int depth = 0;
        std::vector<DirectoryEntry> entries = {}; // as `FS::entries` gives them
    };

    ListingAhead() = default;
    ~ListingAhead(); // waits for what is being read, no more
    ListingAhead(const ListingAhead&) = delete;
    ListingAhead& operator=(const ListingAhead&) = delete;

    void push(std::string path, int depth);

    // The next folder, listed. Absent when there is none.
    std::optional<Folder> pop();

private:
    enum class State { waiting, reading, read };
    struct Slot {
        Folder folder;
        State state = State::waiting;
    };

    void help();
    void callHelpers();
    bool mayReadAhead() const;

    std::mutex lock_;
    std::condition_variable changed_;
    std::vector<std::shared_ptr<Slot>> folders_; // the next one last
    std::vector<std::shared_ptr<Slot>> waiting_; // those of them that nobody reads yet, in the same order
    size_t entriesAhead_ = 0;                    // read and not popped yet, each folder counting as one more
    bool isOver_ = false;
    std::vector<std::thread> helpers_;
};

} // namespace loftmere
