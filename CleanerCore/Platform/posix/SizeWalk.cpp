#include "CleanerCore/Platform/TreeWalk.h"
#include "CleanerCore/Platform/posix/EntryReader.h"
#include "CleanerCore/Platform/posix/FileSystem.h"
#include "CleanerCore/Platform/posix/PendingFolders.h"
#include "CleanerCore/Support/Crew.h"
#include "CleanerCore/Support/PathText.h"

#include <fcntl.h>

#include <atomic>
#include <condition_variable>
#include <limits>
#include <mutex>
#include <utility>

namespace loftmere {

namespace {

using Task = PendingFolders::Task;
using Folder = PendingFolders::Folder;

constexpr int64_t entriesPerQuestion = 2000;
constexpr int64_t never = std::numeric_limits<int64_t>::max();

// A cold disk answers faster when it is asked many things at once, whatever the number of processor cores,
// and threads that wait for it cost next to nothing. More than two dozen at a time gain nothing when the disk
// is warm, and others need helpers too.
constexpr int helpersForOthers = Crew::limit - 24;

// Starting a helper is worth its cost when this many folders wait for each thread at work.
constexpr size_t amountPerWorker = 24;

class SizeWalk {
public:
    SizeWalk(FileDescriptor root, const std::function<bool()>& cancel)
        : pending_(std::move(root)), cancel_(cancel) {}

    int64_t run();

private:
    // What one thread works with.
    struct Desk {
        EntryReader reader;
        PackedNames subfolders;
        int64_t total = 0;
    };

    void work();
    std::optional<Task> nextTask(std::unique_lock<std::mutex>& lock);
    void callHelper();
    Folder look(Task& task, Desk& desk);
    bool leaveRest(Task& task, const Folder& folder);
    void measure(const Folder& folder, Desk& desk);
    void ask(int64_t number);
    bool isStopped() const { return stoppedAt_ != never; }

    std::mutex mutex_; // guards all up to the blank line
    std::condition_variable changed_;
    PendingFolders pending_;
    Crew helpers_{[this] { work(); }};
    int busy_ = 0;
    int idle_ = 0;
    int64_t total_ = 0;

    std::mutex asking_;
    const std::function<bool()>& cancel_;
    std::atomic<int64_t> seen_ = 0;
    // The number of the entry at which the walk was cancelled. Those before it count, whatever their thread.
    std::atomic<int64_t> stoppedAt_ = never;
};

int64_t SizeWalk::run() {
    work();
    // A thread that is out of work has seen nothing pending and nobody busy, or the stop. After that nobody
    // calls a helper.
    helpers_.wait();
    return total_;
}

void SizeWalk::work() {
    Desk desk;
    std::unique_lock lock(mutex_);
    while (auto task = nextTask(lock)) {
        lock.unlock();
        Folder folder = look(*task, desk);
        if (desk.subfolders.empty())
            folder = task->folder = nullptr; // closed here, so that others need not wait for it
        lock.lock();
        if (folder) {
            pending_.addSubfolders(*task, folder, std::exchange(desk.subfolders, {}));
            if (pending_.amount() > 1) callHelper();
        }
        pending_.finish(*task);
        --busy_;
    }
    total_ += desk.total;
}

std::optional<Task> SizeWalk::nextTask(std::unique_lock<std::mutex>& lock) {
    while (!isStopped()) {
        if (!pending_.empty()) {
            if (auto task = pending_.take()) {
                ++busy_;
                return task;
            }
        } else if (busy_ > 0) {
            ++idle_;
            changed_.wait(lock);
            --idle_;
        } else {
            break;
        }
    }
    changed_.notify_all(); // the others have nothing to wait for either
    return std::nullopt;
}

// Gets what waits taken up: by a thread that has run out of work, else by a new helper.
void SizeWalk::callHelper() {
    if (idle_ > 0) {
        changed_.notify_one();
        return;
    }
    const bool isWorthwhile = pending_.amount() >= amountPerWorker * (helpers_.size() + 1);
    if (isWorthwhile && !isStopped()) helpers_.call(helpersForOthers);
}

// Reads the folder that the task leads to, adds up its files and collects its subfolders. Null when it cannot
// be opened.
Folder SizeWalk::look(Task& task, Desk& desk) {
    Folder folder = task.folder;
    if (!task.name.empty()) {
        FileDescriptor opened = openListedFolder(task.folder->get(), task.name.c_str());
        if (!opened) return nullptr;
        folder = std::make_shared<const FileDescriptor>(std::move(opened));
    }
    bool isLeftToOthers = false;
    while (!isLeftToOthers && !isStopped() && desk.reader.read(folder->get())) {
        isLeftToOthers = desk.reader.isFull() && leaveRest(task, folder);
        measure(folder, desk);
    }
    return folder;
}

// Lets another thread read on in a large folder while this one measures what it has read.
bool SizeWalk::leaveRest(Task& task, const Folder& folder) {
    const std::lock_guard lock(mutex_);
    if (!pending_.canDefer()) return false;
    pending_.addRest(task, folder);
    callHelper();
    return true;
}

void SizeWalk::measure(const Folder& folder, Desk& desk) {
    int64_t number = cancel_ ? seen_.fetch_add(desk.reader.count()) : 0;
    RawEntry entry;
    while (desk.reader.next(entry)) {
        if (cancel_ && ++number % entriesPerQuestion == 0) ask(number);
        if (number >= stoppedAt_.load(std::memory_order_relaxed)) return;
        if (entry.type == FileType::directory)
            desk.subfolders.add(entry.name);
        else
            desk.total += allocatedSize(folder->get(), entry);
    }
}

void SizeWalk::ask(int64_t number) {
    const std::lock_guard lock(asking_);
    if (!isStopped() && cancel_()) stoppedAt_ = number;
}

} // namespace

int64_t allocatedBelow(const std::string& folder, const std::function<bool()>& cancel) {
    // A slash at the end would make the system follow a link.
    FileDescriptor root = openQuietly(std::string(withoutTrailingSlashes(folder)), O_DIRECTORY | O_NOFOLLOW);
    return root ? SizeWalk(std::move(root), cancel).run() : 0;
}

} // namespace loftmere
