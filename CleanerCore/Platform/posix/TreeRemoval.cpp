#include "CleanerCore/Platform/posix/Calls.h"
#include "CleanerCore/Platform/posix/FileSystem.h"
#include "CleanerCore/Platform/posix/RemovalParts.h"
#include "CleanerCore/Support/Crew.h"
#include "CleanerCore/Support/PathText.h"

#include <dirent.h>

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>

namespace loftmere {

namespace {

constexpr size_t entriesBeforeSharing = 512; // a smaller tree is gone before a helper has started
constexpr size_t shareableDepth =
    24;                          // folders above this depth keep their descriptor while others work below
constexpr size_t openDepth = 24; // how many of the folders further down are held open
constexpr size_t mostSubfolders = 1024; // names of one folder kept at a time
constexpr int mostPasses = 100;         // over a folder that others keep filling
constexpr mode_t ownerRights = 0700;

bool isOursWithoutRights(const struct stat& status) {
    return S_ISDIR(status.st_mode) && status.st_uid == ::geteuid() &&
           (status.st_mode & ownerRights) != ownerRights;
}

mode_t withRights(const struct stat& status) {
    return (status.st_mode & 07777) | ownerRights;
}

// Opens the folder `name` of `parent` for deletion. If it is ours and lacks the rights for that, it gets
// them, and `formerMode` receives what it had. errno says why there is no descriptor.
FileDescriptor openDoomed(int parent, const char* name, std::optional<mode_t>& formerMode) {
    FileDescriptor folder = openForRemoval(parent, name);
    struct stat status{};
    if (folder || errno != EACCES) return folder;
    const bool ours =
        ::fstatat(parent, name, &status, AT_SYMLINK_NOFOLLOW) == 0 && isOursWithoutRights(status);
    if (ours && calls::changeModeAt(parent, name, withRights(status)) == 0) {
        formerMode = status.st_mode & 07777;
        return openForRemoval(parent, name);
    }
    errno = EACCES;
    return folder;
}

// One folder of a tree that is being deleted. The thread that entered it reads it. Other threads may only
// open its subfolders, and delete those that are empty.
struct DoomedFolder : std::enable_shared_from_this<DoomedFolder> {
    using Stream = std::unique_ptr<DIR, int (*)(DIR*)>;

    DoomedFolder(std::shared_ptr<DoomedFolder> above, std::string itsName);

    // The base of calls relative to the folder; -1 while it is closed.
    int descriptor() const;

    // Starts to read from this descriptor. False when it cannot be read.
    bool attach(FileDescriptor folder);

    // Closes the descriptor for a while. The folder can be reached again from one of its subfolders.
    void close();

    // Opens a closed folder again through the subfolder `inner`. False when somebody moved that one
    // elsewhere; then the way back is lost.
    bool reopenFrom(const DoomedFolder& inner);

    // Gives its owner the right to change the folder, once. False when the right is not missing or is not
    // ours to give.
    bool makeWritable();

    // Undoes makeWritable, for a folder that could not be deleted.
    void restoreMode() const;

    std::shared_ptr<DoomedFolder> parent; // null above the root of the tree
    std::string name;
    size_t depth = 0;

    Stream stream{nullptr, ::closedir};
    std::vector<std::string> subfolders; // read and not yet entered
    bool isRead = false;                 // nothing more comes from the stream
    int passes = 1;
    std::atomic<size_t> removed = 0; // entries deleted in this pass

    // Who still works in here: the thread that entered it, and every subfolder that is entered or given away.
    std::atomic<int> workers = 1;
    bool isSettled = false; // deleted, or known to stay

    struct stat identity{}; // of a closed folder
    std::optional<mode_t> formerMode;
};

DoomedFolder::DoomedFolder(std::shared_ptr<DoomedFolder> above, std::string itsName)
    : parent(std::move(above)), name(std::move(itsName)), depth(parent ? parent->depth + 1 : 0) {}

int DoomedFolder::descriptor() const {
    return stream ? ::dirfd(stream.get()) : -1;
}

bool DoomedFolder::attach(FileDescriptor folder) {
    if (!folder) return false;
    stream.reset(::fdopendir(folder.get()));
    if (!stream) return false;
    (void)folder.release(); // the stream closes it
    return true;
}

void DoomedFolder::close() {
    if (stream && ::fstat(descriptor(), &identity) == 0) stream.reset();
}

bool DoomedFolder::reopenFrom(const DoomedFolder& inner) {
    if (stream) return true;
    if (inner.descriptor() < 0) return false;
    FileDescriptor folder = openForRemoval(inner.descriptor(), "..");
    struct stat found{};
    if (!folder || ::fstat(folder.get(), &found) != 0) return false;
    if (found.st_dev != identity.st_dev || found.st_ino != identity.st_ino) return false;
    return attach(std::move(folder));
}

bool DoomedFolder::makeWritable() {
    if (formerMode) return true;
    struct stat status{};
    if (::fstat(descriptor(), &status) != 0 || !isOursWithoutRights(status)) return false;
    if (calls::changeMode(descriptor(), withRights(status)) != 0) return false;
    formerMode = status.st_mode & 07777;
    return true;
}

void DoomedFolder::restoreMode() const {
    if (formerMode && stream) calls::changeMode(descriptor(), *formerMode);
}

bool isDotOrDotDot(const char* name) {
    return name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
}

// Deep in the tree, closes the folder far above the current one, so that descriptors stay few.
void closeFarAbove(const DoomedFolder& folder) {
    if (folder.depth < shareableDepth + openDepth) return;
    DoomedFolder* above = folder.parent.get();
    for (size_t i = 1; i < openDepth; ++i) above = above->parent.get();
    if (above->depth >= shareableDepth) above->close();
}

// Deletes one folder with all it holds. Every call is relative to an open folder that was entered without
// following a link, so nothing outside the tree is reached, whatever others exchange in the meantime. The
// calling thread goes depth first. Once the tree has proved large, a helper gets whole subfolders whenever it
// has nothing to do. Whoever finishes last in a folder deletes it.
class TreeRemoval {
public:
    explicit TreeRemoval(const Place& place) : place_(place) {}

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
    bool deleteEmptied(DoomedFolder& folder);
    bool makeWritable(DoomedFolder& folder);
    void leave(Folder folder);

    void maybeGive(DoomedFolder& folder, const DoomedFolder& top);
    bool callHelper();
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

    bool triedHelper_ = false;
    Crew helper_{[this] { helpUntilDone(); }};
};

Status TreeRemoval::run() {
    if (Folder root = enter(nullptr, place_.name())) {
        workFrom(std::move(root));
        helpUntilDone();
        helper_.wait();
    }
    if (isGone_) return {}; // what failed at first worked in a later pass
    return failed(std::move(*firstFailure_));
}

// Deletes everything below `top`, which this thread has entered, and `top` itself unless others still work in
// it.
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
            if (isHungry_.load(std::memory_order_relaxed) || !triedHelper_) maybeGive(*folder, top);
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

// Reads on in the folder. Deletes what is no folder at once, and notes the subfolders.
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
    // For a folder, systems answer one or the other. Entering it will show whether it is one.
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

// Deletes the emptied folder. False when it must be read once more, because the reading passed over entries
// or new ones came in.
bool TreeRemoval::settle(DoomedFolder& folder) {
    if (folder.parent && !folder.parent->reopenFrom(folder)) {
        folder.parent->isRead = true;
        folder.parent->subfolders.clear();
        fail(folder.parent.get(), folder.name, ENOENT);
    } else if (!deleteEmptied(folder)) {
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

bool TreeRemoval::deleteEmptied(DoomedFolder& folder) {
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
    const std::lock_guard guard(lock_); // both threads may come to the same read-only folder
    return folder.makeWritable();
}

// This thread has nothing more to do in the folder. The last one settles it, and so on upward.
void TreeRemoval::leave(Folder folder) {
    while (folder && folder->workers.fetch_sub(1) == 1) {
        while (!folder->isSettled && !settle(*folder)) {
            folder->workers = 1; // nobody else is left in it, so it belongs to this thread again
            workFrom(std::move(folder));
            return; // workFrom has left it, and everything above
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

// Gives the idle thread the topmost subfolder that waits on the way to here, since it is likely the largest.
void TreeRemoval::maybeGive(DoomedFolder& folder, const DoomedFolder& top) {
    if (!triedHelper_ && !callHelper()) return;
    if (!isHungry_) return;
    DoomedFolder* topmost = nullptr;
    for (DoomedFolder* at = &folder;; at = at->parent.get()) {
        if (at->depth < shareableDepth && !at->subfolders.empty()) topmost = at;
        if (at == &top) break; // everything above belongs to the other thread
    }
    if (topmost == nullptr) return;
    const std::lock_guard guard(lock_);
    ++topmost->workers;
    gift_ = Gift{topmost->shared_from_this(), std::move(topmost->subfolders.back())};
    topmost->subfolders.pop_back();
    isHungry_ = false; // only the waiting thread sets it
    changed_.notify_one();
}

bool TreeRemoval::callHelper() {
    if (removed_.load(std::memory_order_relaxed) < entriesBeforeSharing) return false;
    triedHelper_ = true;
    return helper_.call();
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

} // namespace

Status removeTree(const Place& place) {
    return TreeRemoval(place).run();
}

} // namespace loftmere
