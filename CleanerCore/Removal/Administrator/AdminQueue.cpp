#include "CleanerCore/Removal/Administrator/AdminQueue.h"

#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Removal/Administrator/AdminRunner.h"
#include "CleanerCore/Removal/AuditLog.h"
#include "CleanerCore/Support/ByteCount.h"

#include <set>

namespace loftmere {

namespace {

struct Batch {
    std::vector<ScanItem> items;
    std::vector<ClearedPath> paths; // of the items
};

// What may still be removed and is still there. A command has no path, so it is left out.
Batch batchOf(const std::vector<ScanItem>& items, const RemovalPermit& permit) {
    Batch batch;
    for (const ScanItem& item : items) {
        const std::string* path = item.anyPath();
        auto cleared = path ? permit.clearForRoot(*path) : std::unexpected(SafetyPolicy::Blocked{});
        if (!cleared || !FS::isReachable(cleared->path())) continue;
        batch.items.push_back(item);
        batch.paths.push_back(*std::move(cleared));
    }
    return batch;
}

// What came of each item, for the caller and for the log.
struct Account {
    AdminQueue::Outcome outcome;
    std::vector<AuditEntry> entries;

    // `failure` says why the item is still there; empty when it is gone.
    void add(const ScanItem& item, std::string failure) {
        AuditEntry entry = AuditEntry::now("delete", *item.anyPath(), ManualTrigger{});
        entry.size = item.size;
        entry.category = item.category;
        entry.success = failure.empty();
        entry.message = entry.success ? "admin batch" : "admin batch failed";
        entries.push_back(std::move(entry));
        if (!failure.empty()) {
            outcome.failed.emplace_back(item, std::move(failure));
            return;
        }
        outcome.removed.push_back(item);
        addBytes(outcome.freed, item.size);
    }
};

Account removed(const Batch& batch, const AdminQueue::Remover& remover) {
    Account account;
    if (batch.items.empty()) return account;
    const Shell::Result result = remover(batch.paths);
    for (size_t i = 0; i < batch.items.size(); ++i) {
        const std::string& path = batch.paths[i].path();
        account.add(batch.items[i],
                    AdminRunner::isGone(path, result) ? "" : AdminRunner::explain(result, path));
    }
    return account;
}

// Every item failed, for this one reason.
Account refused(const std::vector<ScanItem>& items, const Failure& why) {
    Account account;
    for (const ScanItem& item : items) {
        if (item.anyPath() != nullptr) account.add(item, why.message);
    }
    return account;
}

} // namespace

AdminQueue& AdminQueue::shared() {
    static AdminQueue queue([](const std::vector<ClearedPath>& paths) { return AdminRunner::remove(paths); });
    return queue;
}

AdminQueue::AdminQueue(Remover remover) : remover_(std::move(remover)) {}

void AdminQueue::enqueue(const std::vector<ScanItem>& items) {
    const std::lock_guard guard(lock_);
    std::set<std::string> queued;
    for (const ScanItem& item : items_) queued.insert(item.id);
    for (const ScanItem& item : items) {
        if (!queued.contains(item.id)) items_.push_back(item);
    }
}

std::vector<ScanItem> AdminQueue::pending() const {
    const std::lock_guard guard(lock_);
    return items_;
}

int64_t AdminQueue::pendingBytes() const {
    const std::lock_guard guard(lock_);
    int64_t bytes = 0;
    for (const ScanItem& item : items_) addBytes(bytes, item.size);
    return bytes;
}

void AdminQueue::clear() {
    const std::lock_guard guard(lock_);
    items_.clear();
}

AdminQueue::Outcome AdminQueue::flush(const Paths& paths, const AppConfig& config) {
    const std::vector<ScanItem> queued = pending();
    const auto permit = RemovalPermit::ask(paths, config);
    const Account account =
        permit ? removed(batchOf(queued, *permit), remover_) : refused(queued, permit.error());
    AuditLog(paths).append(account.entries);
    clear();
    return account.outcome;
}

} // namespace loftmere
