#include "CleanerCore/Removal/Administrator/AdminRunner.h"
#include "CleanerCore/Removal/Cleaning/CleanRun.h"
#include "CleanerCore/Support/ByteCount.h"

namespace loftmere {

void CleanRun::finishAsAdmin(bool isStopped) {
    if (dryRun_) {
        for (const ScanItem& item : adminItems_) addBytes(report_.freedBytes, item.size);
    } else if (with_.config.queueAdminRemovals || isStopped) {
        enqueueForAdmin();
    } else {
        removeAsAdmin();
    }
}

void CleanRun::enqueueForAdmin() {
    with_.administration.queue->enqueue(adminItems_);
    report_.deferredAdmin = static_cast<int64_t>(adminItems_.size());
    for (const ScanItem& item : adminItems_) {
        log("queued", item, item.path() ? *item.path() : item.title, true, "waiting for one password prompt");
    }
}

void CleanRun::removeAsAdmin() {
    std::vector<const ScanItem*> kept;
    std::vector<std::string> paths;
    for (const ScanItem& item : adminItems_) {
        const CleanPlan plan = with_.planner.planForAdmin(*item.path());
        if (plan.action == CleanAction::skip) {
            skip(item, plan.message);
            continue;
        }
        kept.push_back(&item);
        paths.push_back(with_.planner.normalize(*item.path()));
    }
    const Shell::Result result = with_.administration.remove(paths);
    for (size_t i = 0; i < kept.size(); ++i) accountAsAdmin(*kept[i], paths[i], result);
}

void CleanRun::accountAsAdmin(const ScanItem& item, const std::string& path, const Shell::Result& result) {
    const bool isGone = AdminRunner::isGone(path, result);
    if (isGone) {
        addBytes(report_.freedBytes, item.size);
        ++report_.itemsProcessed;
    } else {
        fail(item, result.ok() ? "Could not remove" : result.err);
    }
    log("delete", item, *item.path(), isGone, "admin");
}

} // namespace loftmere
