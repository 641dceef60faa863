#pragma once

#include "CleanerCore/Files/Paths.h"
#include "CleanerCore/Records/CleanCategory.h"
#include "CleanerCore/Records/CleanReport.h"
#include "CleanerCore/Support/Date.h"
#include "CleanerCore/Support/Json.h"

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace loftmere {

// One action that touched, or declined to touch, the disk.
struct AuditEntry {
    std::string id;     // an upper-case UUID
    Date date;          // the moment of the action
    std::string action; // "delete", "skip", "restore", ...
    std::string target; // a path, an item's title or a session's id
    int64_t size = 0;
    std::optional<CleanCategory> category;
    TriggerSource trigger;
    bool success = false; // whether the action did what its name says
    std::optional<std::string> message;

    // An entry of the present moment, with a new random id.
    static AuditEntry now(std::string action, std::string target, TriggerSource trigger);

    // The entry of one line of the log. Absent when the line is damaged. Any thread.
    static std::optional<AuditEntry> ofLine(std::string_view line);

    // The bytes that it counts towards `AuditLog::lifetimeFreed`.
    int64_t freedBytes() const;

    bool operator==(const AuditEntry&) const = default;
};

LOFTMERE_JSON_CODEC(AuditEntry);

// The `freedBytes` of the entry of one line, 0 for a damaged line. Several times as fast as `ofLine` for
// lines as this program writes them. Any thread.
int64_t freedBytesOf(std::string_view line);

// The append-only record of every action, one JSON object a line. Nothing here fails to its caller: the log
// must never take a clean down. Any thread.
class AuditLog {
public:
    explicit AuditLog(const Paths& paths);

    // Writes all entries in one go at the end of the file, or of the file that a link in its place leads to.
    // An entry that cannot be encoded is left out.
    void append(const std::vector<AuditEntry>& entries);

    // The entries of the last `limit` lines, newest first. A damaged line is left out but counts. Behind a
    // damaged line of many MiB nothing is looked for.
    std::vector<AuditEntry> recent(size_t limit) const;

    // The bytes that all successful deletions, moves to the Trash, commands and purges have freed.
    int64_t lifetimeFreed() const;

private:
    std::string file_;
    std::mutex lock_;
};

} // namespace loftmere
