#include "CleanerCore/Platform/posix/TreeRemoval.h"

#include "CleanerCore/Platform/posix/Calls.h"
#include "CleanerCore/Platform/posix/VolumeLimits.h"
#include "CleanerCore/Support/PathText.h"

namespace loftmere {

namespace {

constexpr size_t entriesBeforeSharing = 512; // a smaller tree is gone before a thread has started
constexpr size_t shareableDepth = 24;        // folders above keep their descriptor while others work below
constexpr size_t openDepth = 24;             // of the folders further down, so many are held open
constexpr size_t mostSubfolders = 1024;      // names kept of one folder at a time
constexpr int mostPasses = 100;              // over a folder that others keep filling

bool isDotOrDotDot(const char* name) {
    return name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
}

// Deep in the tree the folders far above the current one are closed, so that descriptors stay few.
void closeFarAbove(const DoomedFolder& folder) {
    if (folder.depth < shareableDepth + openDepth) return;
    DoomedFolder* above = folder.parent.get();
    for (size_t i = 1; i < openDepth; ++i) above = above->parent.get();
    if (above->depth >= shareableDepth) above->close();
}

} // namespace

TreeRemoval::TreeRemoval(const Place& place) : place_(place) {}

Status TreeRemoval::run() {
    if (Folder root = enter(nullptr, place_.name())) {
        workFrom(std::move(root));
        helpUntilDone();
        second_.wait();
    }
    if (isGone_) return {}; // what failed at first went at a later pass
    return failed(std::move(*firstFailure_));
}

// Deletes all below `top`, which this thread has entered, and `top` itself unless others still work in it.
void TreeRemoval::workFrom(Folder top) {
    Folder folder = top;
    while (true) {
        if (Folder next = nextSubfolder(folder, *top)) {
            folder = std::move(next);
            continue;
        }
        if (folder->workers == 1 && !settle(*folder)) continue;
        const bool isTop = folder == top;
        Folder parent = folder->parent;
        leave(std::move(folder));
        if (isTop) return;
        folder = std::move(parent);
    }
}

TreeRemoval::Folder TreeRemoval::nextSubfolder(const Folder& folder, const DoomedFolder& top) {
    while (true) {
        while (!folder->subfolders.empty()) {
            if (isHungry_.load(std::memory_order_relaxed) || !triedSecond_) maybeGive(*folder, top);
            if (folder->subfolders.empty()) break;
            std::string name = std::move(folder->subfolders.back());
            folder->subfolders.pop_back();
            if (Folder entered = enter(folder, std::move(name))) return entered;
        }
        if (folder->isRead) return nullptr;
        readOn(*folder);
    }
}

// Null when there is nothing to enter: it is gone, it was no folder after all, or it cannot be opened.
TreeRemoval::Folder TreeRemoval::enter(const Folder& parent, std::string name) {
    auto folder = std::make_shared<DoomedFolder>(parent, std::move(name));
    const auto open = [&] {
        return folder->attach(
            openDoomed(parentDescriptor(*folder), folder->name.c_str(), folder->formerMode));
    };
    if (open() || (errno == EACCES && parent && makeWritable(*parent) && open())) {
        if (parent) ++parent->workers;
        closeFarAbove(*folder);
        return folder;
    }
    const int error = errno;
    const bool isNoFolder = error == ENOTDIR || error == ELOOP;
    if (error == ENOENT && parent) return nullptr;
    if (!isNoFolder || !parent)
        fail(parent.get(), folder->name, error);
    else if (!unlinkEntry(*parent, folder->name.c_str()))
        fail(parent.get(), folder->name, errno);
    return nullptr;
}

// Takes in more of the folder: what is no folder goes at once, subfolders are noted.
void TreeRemoval::readOn(DoomedFolder& folder) {
    while (folder.stream && folder.subfolders.size() < mostSubfolders) {
        errno = 0;
        const dirent* entry = ::readdir(folder.stream.get()); // NOLINT(concurrency-mt-unsafe): our own stream
        if (entry == nullptr) {
            if (errno != 0) fail(folder.parent.get(), folder.name, errno);
            break;
        }
        if (isDotOrDotDot(entry->d_name)) continue;
        if (entry->d_type == DT_DIR)
            folder.subfolders.emplace_back(entry->d_name);
        else
            removeEntry(folder, entry->d_name);
    }
    folder.isRead = folder.subfolders.size() < mostSubfolders;
}

void TreeRemoval::removeEntry(DoomedFolder& folder, const char* name) {
    if (unlinkEntry(folder, name)) return;
    // Systems answer one or the other for a folder; entering it tells which it is.
    if (errno == EISDIR || errno == EPERM)
        folder.subfolders.emplace_back(name);
    else
        fail(&folder, name, errno);
}

bool TreeRemoval::unlinkEntry(DoomedFolder& folder, const char* name) {
    const auto unlink = [&] { return calls::unlink(folder.descriptor(), name, 0) == 0 || errno == ENOENT; };
    if (!unlink() && (errno != EACCES || !makeWritable(folder) || !unlink())) return false;
    ++folder.removed;
    removed_.fetch_add(1, std::memory_order_relaxed);
    return true;
}

// Takes the emptied folder away. False when it must be read once more, because entries were passed over by
// the reading or came in since.
bool TreeRemoval::settle(DoomedFolder& folder) {
    if (folder.parent && !folder.parent->reopenFrom(folder)) {
        folder.parent->isRead = true;
        folder.parent->subfolders.clear();
        fail(folder.parent.get(), folder.name, ENOENT);
    } else if (!takeAway(folder)) {
        const bool isFilled = errno == ENOTEMPTY || errno == EEXIST;
        if (isFilled && folder.stream && folder.removed.exchange(0) > 0 && folder.passes++ < mostPasses) {
            ::rewinddir(folder.stream.get());
            folder.isRead = false;
            return false;
        }
        fail(folder.parent.get(), folder.name, errno);
        folder.restoreMode();
    }
    folder.isSettled = true;
    return true;
}

bool TreeRemoval::takeAway(DoomedFolder& folder) {
    const auto remove = [&] {
        return calls::unlink(parentDescriptor(folder), folder.name.c_str(), AT_REMOVEDIR) == 0 ||
               errno == ENOENT;
    };
    if (!remove() && (errno != EACCES || !folder.parent || !makeWritable(*folder.parent) || !remove())) {
        return false;
    }
    if (folder.parent)
        ++folder.parent->removed;
    else
        isGone_ = true;
    removed_.fetch_add(1, std::memory_order_relaxed);
    return true;
}

bool TreeRemoval::makeWritable(DoomedFolder& folder) {
    const std::lock_guard guard(lock_); // both threads may meet the same read-only folder
    return folder.makeWritable();
}

// This thread has no more to do in the folder. The last one settles it, and so on upward.
void TreeRemoval::leave(Folder folder) {
    while (folder && folder->workers.fetch_sub(1) == 1) {
        while (!folder->isSettled && !settle(*folder)) {
            folder->workers = 1; // nobody is left in it, so it is this thread's own again
            workFrom(std::move(folder));
            return; // which has left it, and all above
        }
        Folder parent = std::move(folder->parent);
        if (!parent) {
            const std::lock_guard guard(lock_);
            isDone_ = true;
            changed_.notify_all();
        }
        folder = std::move(parent);
    }
}

// Gives the idle thread the topmost subfolder that is waiting on the way to here: it is likely the largest.
void TreeRemoval::maybeGive(DoomedFolder& folder, const DoomedFolder& top) {
    if (!triedSecond_ && !startSecondThread()) return;
    if (!isHungry_) return;
    DoomedFolder* topmost = nullptr;
    for (DoomedFolder* at = &folder;; at = at->parent.get()) {
        if (at->depth < shareableDepth && !at->subfolders.empty()) topmost = at;
        if (at == &top) break; // what lies above belongs to the other thread
    }
    if (topmost == nullptr) return;
    const std::lock_guard guard(lock_);
    ++topmost->workers;
    gift_ = Gift{topmost->shared_from_this(), std::move(topmost->subfolders.back())};
    topmost->subfolders.pop_back();
    isHungry_ = false; // only the thread that waits sets it
    changed_.notify_one();
}

bool TreeRemoval::startSecondThread() {
    if (removed_.load(std::memory_order_relaxed) < entriesBeforeSharing) return false;
    triedSecond_ = true;
    return second_.call();
}

void TreeRemoval::helpUntilDone() {
    while (std::optional<Gift> gift = awaitGift()) {
        if (Folder folder = enter(gift->parent, std::move(gift->name))) workFrom(std::move(folder));
        leave(std::move(gift->parent));
    }
}

std::optional<TreeRemoval::Gift> TreeRemoval::awaitGift() {
    std::unique_lock guard(lock_);
    isHungry_ = !gift_ && !isDone_;
    changed_.wait(guard, [this] { return gift_ || isDone_; });
    isHungry_ = false;
    return std::exchange(gift_, std::nullopt);
}

int TreeRemoval::parentDescriptor(const DoomedFolder& folder) const {
    return folder.parent ? folder.parent->descriptor() : place_.folder();
}

std::string TreeRemoval::pathOf(const DoomedFolder* folder, const std::string& name) const {
    constexpr size_t longestShown = 1000;
    if (folder == nullptr) return place_.realPath();
    std::string below = name;
    for (; folder->parent; folder = folder->parent.get()) {
        if (below.size() > longestShown) return joinPath(place_.realPath(), ".../" + below);
        below = joinPath(folder->name, below);
    }
    return joinPath(place_.realPath(), below);
}

void TreeRemoval::fail(const DoomedFolder* folder, const std::string& name, int error) {
    const std::lock_guard guard(lock_);
    if (firstFailure_) return;
    const std::string path = pathOf(folder, name);
    firstFailure_ = error == EXDEV ? mountedThere("delete", path) : Failure::posix(error, "delete", path);
}

} // namespace loftmere
