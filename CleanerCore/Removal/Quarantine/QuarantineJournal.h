#pragma once

#include "CleanerCore/Platform/AppendFile.h"
#include "CleanerCore/Removal/Quarantine/QuarantineEntry.h"
#include "CleanerCore/Support/Result.h"

#include <span>
#include <string>
#include <unordered_set>
#include <vector>

namespace loftmere {

// What is about to happen to a session's items, one JSON object a line: the entry of an item that will be
// moved in, or
// {"restoring": storedName} for one that will be moved back. A line is on the disk before its item moves, so
// that whatever ends the process, a later reader can tell from where the items are what has happened. A
// damaged line is passed over.
struct QuarantineJournal {
    std::vector<QuarantineEntry>
        arriving; // in the order written; a later line of one name replaces an earlier
    std::unordered_set<std::string> restoring; // stored names

    static constexpr const char* fileName = "journal.jsonl";

    // The lines of the file; empty when there is none. Fails when it is there and cannot be read: who went on
    // without it would take what it lists for nobody's.
    static Result<QuarantineJournal> read(const std::string& path);

    // Adds lines and waits until they are on the disk.
    static Status announceArriving(AppendFile& file, std::span<const QuarantineEntry> entries);
    static Status announceRestoring(AppendFile& file, std::span<const QuarantineEntry* const> entries);
};

} // namespace loftmere
