#include "CleanerCore/Platform/posix/PendingFolders.h"

#include "CleanerCore/Platform/posix/FileSystem.h"

#include <fcntl.h>

#include <algorithm>
#include <utility>

namespace loftmere {

FileDescriptor openListedFolder(int folder, const char* name) {
    return openQuietly(folder, name, O_DIRECTORY | O_NOFOLLOW);
}

std::string PackedNames::takeFirst() {
    std::string name(bytes_.c_str() + begin_);
    begin_ += name.size() + 1;
    --count_;
    return name;
}

PendingFolders::PendingFolders(FileDescriptor root, size_t rootPathLength) : nodes_(1) {
    nodes_[rootNode].users = 1;
    nodes_[rootNode].pathLength = rootPathLength;
    keepOpen(rootNode, std::make_shared<const FileDescriptor>(std::move(root)));
    amount_ = restWorth;
    push(rootNode, {});
}

std::optional<PendingFolders::Task> PendingFolders::take() {
    Unit& unit = units_.back();
    const int id = unit.node;
    if (!nodes_[id].folder && !reopen(id)) {
        pop();
        release(id);
        return std::nullopt;
    }
    Node& node = nodes_[id];
    Task task{.node = id, .folder = node.folder, .name = {}, .pathLength = node.pathLength};
    ++node.users;
    if (unit.names.empty()) {
        node.isPartlyRead = false;
        amount_ -= restWorth;
    } else {
        task.name = unit.names.takeFirst();
        --amount_;
        if (!unit.names.empty()) return task;
    }
    pop();
    release(id);
    return task;
}

void PendingFolders::addRest(Task& task, const Folder& folder) {
    const int id = enter(task, folder);
    nodes_[id].isPartlyRead = true;
    nodes_[id].folder = folder; // the position belongs to this descriptor, not to one opened again since
    amount_ += restWorth;
    push(id, {});
}

void PendingFolders::addSubfolders(Task& task, const Folder& folder, PackedNames names) {
    const int id = enter(task, folder);
    amount_ += names.count();
    push(id, std::move(names));
}

void PendingFolders::finish(const Task& task) {
    release(task.node);
}

// The node of the folder that the task led to: a new one, unless the task is about that folder already. The
// task's hold on the parent passes to the new node.
int PendingFolders::enter(Task& task, const Folder& folder) {
    if (!task.name.empty()) {
        if (freeNodes_.empty()) {
            freeNodes_.push_back(static_cast<int>(nodes_.size()));
            nodes_.emplace_back();
        }
        const int id = freeNodes_.back();
        freeNodes_.pop_back();
        task.pathLength += task.name.size() + 1;
        Node& node = nodes_[id] = {};
        node.parent = std::exchange(task.node, id);
        node.users = 1;
        node.pathLength = task.pathLength;
        node.name = std::exchange(task.name, {});
        task.folder = folder;
    }
    if (!nodes_[task.node].folder) keepOpen(task.node, folder);
    return task.node;
}

void PendingFolders::push(int node, PackedNames names) {
    ++nodes_[node].users;
    ++nodes_[node].waiting;
    units_.push_back({node, std::move(names)});
    closeShallowest();
}

void PendingFolders::pop() {
    const int node = units_.back().node;
    amount_ -= units_.back().names.count();
    units_.pop_back();
    closedBelow_ = std::min(closedBelow_, units_.size());
    if (--nodes_[node].waiting == 0) close(node);
}

void PendingFolders::release(int node) {
    while (node >= 0 && --nodes_[node].users == 0) {
        close(node);
        freeNodes_.push_back(node);
        node = nodes_[node].parent;
    }
}

void PendingFolders::keepOpen(int node, const Folder& folder) {
    nodes_[node].folder = folder;
    ++open_;
}

void PendingFolders::close(int node) {
    if (node == rootNode || !nodes_[node].folder) return;
    nodes_[node].folder.reset();
    --open_;
}

// Keeps to the limit. The deepest are needed first, and one that is partly read must keep its position.
void PendingFolders::closeShallowest() {
    for (; open_ > openLimit && closedBelow_ < units_.size(); ++closedBelow_) {
        const int node = units_[closedBelow_].node;
        if (!nodes_[node].isPartlyRead) close(node);
    }
}

// Opens a folder again, starting at the nearest open one above it. Keeps open those on the way that will be
// needed next, so that the way is not taken again for each of them.
bool PendingFolders::reopen(int node) {
    std::vector<int> way;
    for (; !nodes_[node].folder; node = nodes_[node].parent) way.push_back(node);
    Folder folder = nodes_[node].folder;
    for (size_t left = way.size(); left > 0; --left) {
        Node& next = nodes_[way[left - 1]];
        FileDescriptor opened = openListedFolder(folder->get(), next.name.c_str());
        if (!opened) return false;
        folder = std::make_shared<const FileDescriptor>(std::move(opened));
        if (next.waiting > 0 && left <= openLimit / 2) keepOpen(way[left - 1], folder);
    }
    closedBelow_ = 0;
    return true;
}

} // namespace loftmere
