#pragma once

#include "CleanerCore/Removal/AuditLog.h"
#include "CleanerCore/Removal/Quarantine/QuarantineSession.h"
#include "LoftmereApp/Model/Published.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace loftmere {

// What can be undone, and what was done.
struct SafetyFields : FieldGroup {
    using FieldGroup::FieldGroup;

    Published<std::vector<QuarantineSession>> sessions{main_}; // newest first

    // The names of the quarantine's folders that hold no readable session. Nothing can be brought back from
    // them by name, but `purge` takes them.
    Published<std::vector<std::string>> unreadableSessions{main_};

    Published<std::vector<AuditEntry>> audit{main_}; // the newest 300, newest first

    // Why `sessions`, or `audit`, does not show what there is: a sentence for the user. Absent when it does.
    Published<std::optional<std::string>> quarantineFailure{main_};
    Published<std::optional<std::string>> auditFailure{main_};
};

// What became of the quarantine sessions that had expired.
struct ExpiredPurge {
    std::vector<std::string> purged; // their ids
    int64_t bytes = 0;               // that these held
    std::vector<std::string> left;   // the ids of those that could not be deleted
};

// What the safety policy says of a path.
struct PathVerdict {
    enum class Kind {
        allowed,
        syncedCloud, // removed here, it is removed from all the user's devices
        needsAdmin,
        blocked,
    };
    Kind kind = Kind::blocked;
    std::string detail = ""; // the provider's name for `syncedCloud`, the reason for `blocked`

    bool operator==(const PathVerdict&) const = default;
};

} // namespace loftmere
