#include "CleanerCore/Removal/Administrator/AdminQueue.h"

#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Platform/System.h"
#include "CleanerCore/Removal/Administrator/AdminRunner.h"
#include "CleanerCore/Removal/AuditLog.h"
#include "CleanerCore/Safety/SafetyPolicy.h"
#include "CleanerCore/Support/ByteCount.h"
#include "CleanerCore/Support/Date.h"

#include <set>
#include <variant>

namespace loftmere {

namespace {

// What may still be removed and is still there. A command has no path, so it is left out.
std::vector<ScanItem> batchOf(const std::vector<ScanItem>& items, const SafetyPolicy& policy) {
    std::vector<ScanItem> batch;
    for (const ScanItem& item : items) {
        const std::string* path = item.anyPath();
        if (path == nullptr || std::holds_alternative<SafetyPolicy::Blocked>(policy.check(*path))) continue;
        if (FS::isReachable(*path)) batch.push_back(item);
    }
    return batch;
}

std::vector<std::string> pathsOf(const std::vector<ScanItem>& batch) {
    std::vector<std::string> paths;
    for (const ScanItem& item : batch) paths.push_back(*item.anyPath());
    return paths;
}

AuditEntry entryOf(const ScanItem& item, bool gone) {
    return {.id = newUUID(),
            .date = currentDate(),
            .action = "delete",
            .target = *item.anyPath(),
            .size = item.size,
            .category = item.category,
            .trigger = ManualTrigger{},
            .success = gone,
            .message = gone ? "admin batch" : "admin batch failed"};
}

} // namespace

AdminQueue& AdminQueue::shared() {
    static AdminQueue queue([](const std::vector<std::string>& paths) { return AdminRunner::remove(paths); });
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
    const std::vector<ScanItem> batch = batchOf(pending(), SafetyPolicy(paths, config.protectedPaths));
    if (batch.empty()) {
        clear();
        return {};
    }
    const Shell::Result result = remover_(pathsOf(batch));
    Outcome outcome;
    std::vector<AuditEntry> entries;
    for (const ScanItem& item : batch) {
        const std::string& path = *item.anyPath();
        const bool gone = AdminRunner::isGone(path, result);
        if (gone) {
            outcome.removed.push_back(item);
            addBytes(outcome.freed, item.size);
        } else {
            outcome.failed.emplace_back(item, AdminRunner::explain(result, path));
        }
        entries.push_back(entryOf(item, gone));
    }
    AuditLog(paths).append(entries);
    clear();
    return outcome;
}

} // namespace loftmere
