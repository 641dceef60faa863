#pragma once

#include "CleanerCore/Platform/Place.h"
#include "CleanerCore/Platform/posix/DoomedFolder.h"
#include "CleanerCore/Support/Crew.h"
#include "CleanerCore/Support/Result.h"

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace loftmere {

// Deletes one folder with all it holds. Every call is relative to an open folder that was entered without
// following a link, so that nothing outside the tree is reached whatever is exchanged meanwhile. The calling
// thread goes depth first; once the tree has proved large, a second thread is given whole subfolders whenever
// it has nothing to do. A folder is taken away by whoever finishes last in it.
class TreeRemoval {
public:
    explicit TreeRemoval(const Place& place);

    // Once. On failure all that could be deleted is gone.
    Status run();

private:
    using Folder = std::shared_ptr<DoomedFolder>;
    struct Gift {
        Folder parent;
        std::string name;
    };

    void workFrom(Folder top);
    Folder nextSubfolder(const Folder& folder, const DoomedFolder& top);
    Folder enter(const Folder& parent, std::string name);
    void readOn(DoomedFolder& folder);
    void removeEntry(DoomedFolder& folder, const char* name);
    bool unlinkEntry(DoomedFolder& folder, const char* name);
    bool settle(DoomedFolder& folder);
    bool takeAway(DoomedFolder& folder);
    bool makeWritable(DoomedFolder& folder);
    void leave(Folder folder);

    void maybeGive(DoomedFolder& folder, const DoomedFolder& top);
    bool startSecondThread();
    void helpUntilDone();
    std::optional<Gift> awaitGift();

    int parentDescriptor(const DoomedFolder& folder) const;
    std::string pathOf(const DoomedFolder* folder, const std::string& name) const;
    void fail(const DoomedFolder* folder, const std::string& name, int error);

    const Place& place_;
    std::atomic<size_t> removed_ = 0;
    std::atomic<bool> isGone_ = false;

    std::mutex lock_; // guards all below
    std::condition_variable changed_;
    std::optional<Gift> gift_;
    bool isDone_ = false;
    std::optional<Failure> firstFailure_;
    std::atomic<bool> isHungry_ = false; // a thread waits for a gift; written under the lock

    bool triedSecond_ = false;
    Crew second_{[this] { helpUntilDone(); }};
};

} // namespace loftmere
