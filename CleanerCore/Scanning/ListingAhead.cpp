#include "CleanerCore/Scanning/ListingAhead.h"

#include "CleanerCore/Files/FS.h"

#include <exception>
#include <system_error>
#include <utility>

namespace loftmere {

namespace {

constexpr size_t helperCount = 3; // more than there may be cores: on a cold disk they wait side by side
constexpr size_t mostEntriesAhead = 100'000;
constexpr size_t worthHelp = 16; // folders

} // namespace

ListingAhead::~ListingAhead() {
    {
        const std::lock_guard guard(lock_);
        isOver_ = true;
    }
    changed_.notify_all();
    for (std::thread& helper : helpers_) helper.join();
}

void ListingAhead::push(std::string path, int depth) {
    auto slot = std::make_shared<Slot>(Slot{{std::move(path), depth}});
    bool isAwaited = false;
    {
        const std::lock_guard guard(lock_);
        folders_.push_back(slot);
        waiting_.push_back(std::move(slot));
        isAwaited = waiting_.size() == 1;
    }
    if (isAwaited) changed_.notify_all();
}

std::optional<ListingAhead::Folder> ListingAhead::pop() {
    callHelpers();
    std::unique_lock guard(lock_);
    if (folders_.empty()) return std::nullopt;
    const std::shared_ptr<Slot> next = std::move(folders_.back());
    folders_.pop_back();
    if (next->state == State::waiting) {
        waiting_.pop_back(); // the last of all folders is the last of those waiting
        guard.unlock();
        next->folder.entries = FS::entries(next->folder.path);
        return std::move(next->folder);
    }
    changed_.wait(guard, [&] { return next->state == State::read; });
    const bool wasFull = !mayReadAhead();
    entriesAhead_ -= next->folder.entries.size() + 1;
    if (wasFull && mayReadAhead()) changed_.notify_all();
    return std::move(next->folder);
}

bool ListingAhead::mayReadAhead() const {
    return entriesAhead_ < mostEntriesAhead;
}

void ListingAhead::callHelpers() {
    if (!helpers_.empty() || folders_.size() < worthHelp) return;
    try {
        while (helpers_.size() < helperCount) helpers_.emplace_back([this] { help(); });
    } catch (const std::system_error&) {
        // No further thread can be had; the walk reads what nobody else does.
    }
}

void ListingAhead::help() {
    std::unique_lock guard(lock_);
    while (true) {
        changed_.wait(guard, [&] { return isOver_ || (!waiting_.empty() && mayReadAhead()); });
        if (isOver_) return;
        const std::shared_ptr<Slot> slot = std::move(waiting_.back());
        waiting_.pop_back();
        slot->state = State::reading;
        guard.unlock();
        std::vector<DirectoryEntry> entries;
        try {
            entries = FS::entries(slot->folder.path);
        } catch (const std::exception&) {
            entries = {}; // a folder too large for the memory there is counts as one that cannot be read
        }
        guard.lock();
        slot->folder.entries = std::move(entries);
        slot->state = State::read;
        entriesAhead_ += slot->folder.entries.size() + 1;
        changed_.notify_all();
    }
}

} // namespace loftmere
