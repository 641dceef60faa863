#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Platform/FileStatus.h"
#include "CleanerCore/Platform/RegularFile.h"
#include "CleanerCore/Platform/System.h"
#include "CleanerCore/Removal/Administrator/PrivilegedSession.h"
#include "CleanerCore/Removal/AuditLog.h"
#include "CleanerCore/Removal/Cleaning/Cleaner.h"
#include "CleanerCore/Removal/Quarantine/Quarantine.h"
#include "CleanerCore/Safety/SafetyPolicy.h"
#include "CleanerCore/Support/ByteCount.h"
#include "CleanerCore/Support/Text.h"
#include "LoftmereApp/Model/AppModelWork.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>

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

bool holdsWanted(const QuarantineSession& session, const std::optional<std::set<std::string>>& wanted) {
    return std::ranges::any_of(session.entries, [&](const QuarantineEntry& entry) {
        return !entry.restored && (!wanted || wanted->contains(entry.storedName));
    });
}

// Something is there and cannot be read.
bool isUnreadable(const std::string& path, bool canBeRead) {
    const auto status = linkStatus(path);
    return !canBeRead && (status || status.error() != ENOENT);
}

void logPurge(const Paths& paths, const std::string& target, int64_t bytes) {
    AuditEntry entry = AuditEntry::now("purge", target, ManualTrigger{});
    entry.size = bytes;
    entry.success = true;
    AuditLog(paths).append({entry});
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
    const std::string log = paths.auditFile();
    quarantineFailure = std::nullopt;
    auditFailure = std::nullopt;
    if (!quarantine.check())
        quarantineFailure = fmt::format("the quarantine in {} cannot be read; what it holds is not known",
                                        shortened(paths.quarantineDir()));
    if (isUnreadable(log, RegularFile::open(log).has_value()))
        auditFailure = fmt::format("the log in {} cannot be read", shortened(log));
}

Status AppModel::logState() const {
    const std::string log = paths.auditFile();
    const auto status = targetStatus(log);
    const auto itself = linkStatus(log); // a link that leads nowhere is not missing
    const bool isMissing = !itself && itself.error() == ENOENT;
    const bool canBeWritten = isMissing ? isWritable(paths.supportDir())
                                        : status && status->type == FileType::regular && isWritable(log);
    if (canBeWritten) return {};
    return failed(Failure::saying(fmt::format(
        "the log in {} cannot be written, and what cannot be logged is not removed. If another user "
        "owns it, this helps: sudo chown -R \"$USER\" {}",
        shortened(log), shellQuoted(paths.supportDir()))));
}

Result<Restored> AppModel::restore(const QuarantineSession& session,
                                   const std::optional<std::set<std::string>>& entries) {
    auto restored = Cleaner(paths, config).restore(session.id, entries);
    const bool isNothing = restored && restored->count == 0 && restored->failures.empty();
    if (isNothing && holdsWanted(session, entries))
        restored = failed(Failure::saying(
            fmt::format("session \"{}\" was deleted or cannot be read; nothing was restored", session.id)));
    if (!restored)
        flash(restored.error().message);
    else if (!restored->failures.empty())
        flash(fmt::format("{} item(s) couldn't be restored: {}", restored->failures.size(),
                          restored->failures.front().message));
    else
        flash("Restored");
    refreshSafety();
    return restored;
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
