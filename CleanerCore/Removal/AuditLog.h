#pragma once

#include "CleanerCore/Files/Paths.h"
#include "CleanerCore/Removal/AuditEntry.h"

#include <cstddef>
#include <mutex>
#include <string>
#include <vector>

namespace loftmere {

// The append-only record of every action, one JSON object a line. Nothing here fails to its caller: the log
// must never take a clean down. Any thread.
class AuditLog {
public:
    explicit AuditLog(const Paths& paths);

    // Writes all entries in one go at the end of the file, or of the one that a link leads to in its place.
    // An entry that cannot be encoded is left out.
    void append(const std::vector<AuditEntry>& entries);

    // The entries of the last `limit` lines, newest first. A damaged line is passed over and still counts;
    // behind one of many MiB nothing is looked for.
    std::vector<AuditEntry> recent(size_t limit) const;

    // The bytes that all successful deletions, moves to the Trash, commands and purges have freed.
    int64_t lifetimeFreed() const;

private:
    std::string file_;
    std::mutex lock_;
};

} // namespace loftmere
