#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Platform/RandomBytes.h"
#include "CleanerCore/Removal/Administrator/PrivilegedSession.h"
#include "CleanerCore/Removal/AuditLog.h"
#include "CleanerCore/Removal/Cleaning/Cleaner.h"
#include "CleanerCore/Removal/Quarantine/Quarantine.h"
#include "CleanerCore/Safety/SafetyPolicy.h"
#include "CleanerCore/Support/ByteCount.h"
#include "LoftmereApp/Model/AppModelWork.h"

#include <fmt/format.h>

#include <algorithm>

namespace loftmere {

namespace {

constexpr size_t shownAuditEntries = 300;

std::string words(const AdminQueue::Outcome& outcome) {
    if (outcome.failed.empty()) {
        return fmt::format("Removed {} protected item(s), {} freed", outcome.removed.size(),
                           ByteFormat::string(outcome.freed));
    }
    return fmt::format("{} removed · {} blocked: {}", outcome.removed.size(), outcome.failed.size(),
                       outcome.failed.front().second);
}

PathVerdict shown(const SafetyPolicy::Verdict& verdict) {
    using enum PathVerdict::Kind;
    struct Show {
        PathVerdict operator()(const SafetyPolicy::Allowed&) const { return {allowed}; }
        PathVerdict operator()(const SafetyPolicy::SyncedCloud& synced) const {
            return {syncedCloud, synced.provider};
        }
        PathVerdict operator()(const SafetyPolicy::NeedsAdmin&) const { return {needsAdmin}; }
        PathVerdict operator()(const SafetyPolicy::Blocked& verdict) const {
            return {blocked, verdict.reason};
        }
    };
    return std::visit(Show{}, verdict);
}

void logPurge(const Paths& paths, const std::string& target, int64_t bytes) {
    AuditLog(paths).append({{.id = newUUID(),
                             .date = currentDate(),
                             .action = "purge",
                             .target = target,
                             .size = bytes,
                             .category = std::nullopt,
                             .trigger = ManualTrigger{},
                             .success = true,
                             .message = std::nullopt}});
}

} // namespace

void AppModel::refreshAdminQueue() {
    pendingAdmin = static_cast<int>(AdminQueue::shared().pending().size());
    pendingAdminBytes = AdminQueue::shared().pendingBytes();
}

Task<AdminQueue::Outcome> AppModel::flushAdminQueue() {
    const std::string key = "clean:admin";
    Work::begin(*this, key, "Removing protected items");
    const AdminQueue::Outcome outcome = co_await work_->background(
        [home = paths, settings = config.get()] { return AdminQueue::shared().flush(home, settings); });
    Work::end(*this, key);
    refreshAdminQueue();
    refreshSafety();
    space = FS::volumeSpace(paths.home());
    flash(words(outcome));
    co_return outcome;
}

void AppModel::endPrivilegedSession() {
    PrivilegedSession::shared().end();
}

void AppModel::refreshSafety() {
    const Quarantine quarantine(paths);
    sessions = quarantine.sessions();
    unreadableSessions = quarantine.unreadable(sessions);
    audit = AuditLog(paths).recent(shownAuditEntries);
}

Result<std::vector<CleanFailure>> AppModel::restore(const QuarantineSession& session,
                                                    const std::optional<std::set<std::string>>& entries) {
    const auto failures = Cleaner(paths, config).restore(session.id, entries);
    if (!failures)
        flash(failures.error().message);
    else if (!failures->empty())
        flash(
            fmt::format("{} item(s) couldn't be restored: {}", failures->size(), failures->front().message));
    else
        flash("Restored");
    refreshSafety();
    return failures;
}

Status AppModel::purge(const QuarantineSession& session) {
    const Status purged = Quarantine(paths).purge(session.id);
    logPurge(paths, session.id, session.totalSize());
    refreshSafety();
    return purged;
}

Task<ExpiredPurge> AppModel::purgeExpired() {
    const ExpiredPurge purge = co_await work_->background([home = paths] {
        const Date now = currentDate();
        Quarantine quarantine(home);
        std::vector<QuarantineSession> expired = quarantine.sessions();
        std::erase_if(expired, [&](const auto& session) { return session.expiresAt > now; });
        quarantine.purgeExpired(now);
        const std::vector<QuarantineSession> left = quarantine.sessions();
        ExpiredPurge done;
        for (const QuarantineSession& session : expired) {
            const bool isLeft = std::ranges::find(left, session.id, &QuarantineSession::id) != left.end();
            (isLeft ? done.left : done.purged).push_back(session.id);
            if (!isLeft) addBytes(done.bytes, session.totalSize());
        }
        if (done.bytes > 0) logPurge(home, "expired quarantine", done.bytes);
        return done;
    });
    refreshSafety();
    space = FS::volumeSpace(paths.home());
    co_return purge;
}

Task<std::vector<AuditEntry>> AppModel::history(size_t limit) const {
    co_return co_await work_->background([home = paths, limit] { return AuditLog(home).recent(limit); });
}

Task<std::vector<PathVerdict>> AppModel::check(std::vector<std::string> candidates) const {
    co_return co_await work_->background(
        [candidates = std::move(candidates), home = paths, settings = config.get()] {
            const SafetyPolicy policy(home, settings.protectedPaths);
            std::vector<PathVerdict> verdicts;
            for (const std::string& path : candidates) verdicts.push_back(shown(policy.check(path)));
            return verdicts;
        });
}

} // namespace loftmere
