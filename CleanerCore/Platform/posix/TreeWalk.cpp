#include "CleanerCore/Platform/TreeWalk.h"

#include "CleanerCore/Platform/posix/EntryReader.h"
#include "CleanerCore/Platform/posix/FileSystem.h"
#include "CleanerCore/Platform/posix/PendingFolders.h"

#include <fcntl.h>

#include <utility>

namespace loftmere {

namespace {

using Task = PendingFolders::Task;
using Folder = PendingFolders::Folder;
using Visit = std::function<WalkStep(const WalkEntry&)>;

std::string withFinalSlash(std::string path) {
    if (!path.ends_with('/')) path += '/';
    return path;
}

class TreeWalk {
public:
    TreeWalk(const std::string& root, FileDescriptor folder, const Visit& visit)
        : path_(withFinalSlash(root)), pending_(std::move(folder), path_.size()), visit_(visit) {}

    void run() {
        while (!isStopped_ && !pending_.empty()) {
            auto task = pending_.take();
            if (!task) continue;
            look(*task);
            pending_.finish(*task);
        }
    }

private:
    void look(Task& task) {
        // Everything that waits is beside or above what was visited last, so the path's beginning is still
        // right.
        path_.resize(task.pathLength);
        Folder folder = task.folder;
        if (!task.name.empty()) {
            FileDescriptor opened = openListedFolder(folder->get(), task.name.c_str());
            if (!opened) return;
            folder = std::make_shared<const FileDescriptor>(std::move(opened));
            path_.append(task.name).push_back('/');
        }
        PackedNames subfolders;
        bool isLeft = false;
        while (!isLeft && !isStopped_ && reader_.read(folder->get())) {
            visitEntries(*folder, subfolders);
            isLeft = reader_.isFull() && pending_.canDefer();
        }
        if (isLeft) pending_.addRest(task, folder);
        if (!subfolders.empty()) pending_.addSubfolders(task, folder, std::move(subfolders));
    }

    void visitEntries(const FileDescriptor& folder, PackedNames& subfolders) {
        const size_t begin = path_.size();
        RawEntry entry;
        while (!isStopped_ && reader_.next(entry)) {
            path_.resize(begin);
            path_ += entry.name;
            const auto name = std::string_view(path_).substr(begin);
            const WalkStep step =
                visit_({.path = path_, .name = name, .type = entry.type, .folder = folder.get()});
            isStopped_ = step == WalkStep::stop;
            if (step == WalkStep::proceed && entry.type == FileType::directory) subfolders.add(entry.name);
        }
        path_.resize(begin);
    }

    std::string path_; // of the folder being read, with a final "/"; during a visit, of the entry
    PendingFolders pending_;
    EntryReader reader_;
    const Visit& visit_;
    bool isStopped_ = false;
};

} // namespace

std::expected<FileStatus, int> WalkEntry::status() const {
    return statusAt(folder, name.data()); // the name is the end of `path` and so ends with it
}

bool walkTree(const std::string& root, const Visit& visit) {
    FileDescriptor folder = openQuietly(root, O_DIRECTORY);
    if (!folder) return false;
    TreeWalk(root, std::move(folder), visit).run();
    return true;
}

} // namespace loftmere
