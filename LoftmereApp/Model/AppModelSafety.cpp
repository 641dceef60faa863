#include "CleanerCore/Removal/AuditLog.h"
#include "CleanerCore/Removal/Cleaning/Cleaner.h"
#include "CleanerCore/Removal/Quarantine/Quarantine.h"
#include "CleanerCore/Support/UUID.h"
#include "LoftmereApp/Model/AppModel.h"

#include <fmt/format.h>

namespace loftmere {

namespace {

constexpr size_t shownAuditEntries = 300;

} // namespace

void AppModel::refreshSafety() {
    sessions = Quarantine(paths).sessions();
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
    AuditLog(paths).append({{.id = newUUID(),
                             .date = currentDate(),
                             .action = "purge",
                             .target = session.id,
                             .size = session.totalSize(),
                             .category = std::nullopt,
                             .trigger = ManualTrigger{},
                             .success = true,
                             .message = std::nullopt}});
    refreshSafety();
    return purged;
}

} // namespace loftmere
