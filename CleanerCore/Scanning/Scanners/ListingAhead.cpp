#include "CleanerCore/Scanning/Scanners/ListingAhead.h"

#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Support/PathText.h"

#include <algorithm>
#include <exception>
#include <iterator>
#include <limits>
#include <utility>

namespace loftmere {

namespace {

constexpr size_t helperCount = 7; // possibly more than cores: with a cold disk they wait side by side
constexpr size_t mostEntriesAhead = 100'000;
constexpr size_t foldersOfBranch = 4;
constexpr size_t foldersAtOnce = 64;    // handing a branch over costs as much as listing some folders
constexpr size_t branchesWorthHelp = 4; // a small tree is listed before a helper could start

// A folder that does not fit into memory counts as one that cannot be read.
std::vector<DirectoryEntry> entriesOf(const std::string& path) {
    try {
        return FS::entries(path);
    } catch (const std::exception&) {
        return {};
    }
}

} // namespace

ListingAhead::ListingAhead(std::vector<std::string> roots, Enters enters, std::function<bool()> isCancelled)
    : enters_(std::move(enters)), isCancelled_(std::move(isCancelled)) {
    std::vector<Folder> pending;
    for (std::string& root : roots) pending.push_back({.path = std::move(root)});
    insert(branches_.end(), turns_.end(), std::move(pending));
}

ListingAhead::~ListingAhead() {
    {
        const std::lock_guard guard(lock_);
        isOver_ = true;
    }
    changed_.notify_all();
    helpers_.wait();
}

std::optional<ListingAhead::Folder> ListingAhead::next() {
    if (nextListed_ == listed_.size()) takeBranch();
    if (nextListed_ == listed_.size()) return std::nullopt;
    return std::move(listed_[nextListed_++]);
}

// Instead of waiting for a helper, the walking thread lists what comes later.
void ListingAhead::takeBranch() {
    std::unique_lock guard(lock_);
    listed_.clear();
    nextListed_ = 0;
    while (listed_.empty() && !branches_.empty() && !isCancelled_()) {
        Branch& next = branches_.back();
        const bool isNeeded = next.state == Branch::State::waiting;
        if (next.state == Branch::State::listed) {
            listed_ = std::move(next.listed);
            entriesAhead_ -= next.entryCount;
            branches_.pop_back();
            callHelpers();
        } else if (const auto turn =
                       claim(isNeeded ? std::numeric_limits<size_t>::max() : mostEntriesAhead)) {
            list(*turn, guard);
        } else {
            changed_.wait(guard);
        }
    }
}

// The first branch in the walk's order that nobody has begun.
std::optional<ListingAhead::Turns::iterator> ListingAhead::claim(size_t mostEntries) {
    if (entriesAhead_ >= mostEntries) return std::nullopt;
    for (auto turn = turns_.end(); turn != turns_.begin();) {
        Branch& branch = **--turn;
        if (branch.state != Branch::State::waiting) continue;
        branch.state = Branch::State::inHand;
        return turn;
    }
    return std::nullopt;
}

// Lists with the lock open. What is then left of the branch becomes new branches.
void ListingAhead::list(Turns::iterator turn, std::unique_lock<std::mutex>& guard) {
    Branch& branch = **turn;
    guard.unlock();
    while (!branch.pending.empty() && branch.listed.size() < foldersAtOnce && !isCancelled_())
        listNext(branch);
    guard.lock();
    insert(*turn, turn, std::move(branch.pending));
    turns_.erase(turn);
    branch.state = Branch::State::listed;
    entriesAhead_ += branch.entryCount;
    changed_.notify_all();
}

void ListingAhead::listNext(Branch& branch) const {
    Folder folder = std::move(branch.pending.back());
    branch.pending.pop_back();
    folder.entries = entriesOf(folder.path);
    branch.entryCount += folder.entries.size() + 1;
    for (const DirectoryEntry& entry : folder.entries) {
        if (entry.type == FileType::directory && enters_(entry, folder.depth))
            branch.pending.push_back({.path = joinPath(folder.path, entry.name), .depth = folder.depth + 1});
    }
    branch.listed.push_back(std::move(folder));
}

// Puts the folders below the branch `above`, so that they come right after it in the walk.
void ListingAhead::insert(Branches::iterator above, Turns::iterator turn, std::vector<Folder> pending) {
    for (auto begin = pending.begin(); begin != pending.end();) {
        const auto end = begin + std::min<ptrdiff_t>(foldersOfBranch, pending.end() - begin);
        turns_.insert(turn, branches_.insert(above, {.pending = {std::make_move_iterator(begin),
                                                                 std::make_move_iterator(end)}}));
        begin = end;
    }
}

void ListingAhead::callHelpers() {
    changed_.notify_all(); // there may be room to list ahead again
    if (turns_.size() < branchesWorthHelp) return;
    while (helpers_.size() < helperCount && helpers_.call()) {
    }
}

void ListingAhead::help() {
    std::unique_lock guard(lock_);
    while (!isOver_) {
        if (const auto turn = claim(mostEntriesAhead))
            list(*turn, guard);
        else
            changed_.wait(guard);
    }
}

} // namespace loftmere
