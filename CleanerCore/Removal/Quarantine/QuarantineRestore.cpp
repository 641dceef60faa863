#include "CleanerCore/Removal/Quarantine/QuarantineRestore.h"

#include "CleanerCore/Platform/Removal.h"
#include "CleanerCore/Removal/Quarantine/QuarantineError.h"
#include "CleanerCore/Removal/Quarantine/RestoreDestination.h"

#include <cerrno>

namespace loftmere {

QuarantineRestore::QuarantineRestore(const Paths& paths, const QuarantineFolder& folder,
                                     QuarantineSession session)
    : paths_(paths), folder_(folder), policy_(paths, {}), reserve_(paths), session_(std::move(session)) {}

Result<std::vector<CleanFailure>>
QuarantineRestore::run(const std::optional<std::set<std::string>>& entryIDs) {
    const std::vector<QuarantineEntry*> entries = chosen(entryIDs);
    announce(entries);
    std::vector<CleanFailure> failures;
    for (QuarantineEntry* entry : entries) {
        const Status moved = moveBack(*entry);
        if (moved)
            entry->restored = true;
        else
            failures.push_back({entry->originalPath, moved.error().message});
    }
    if (auto saved = withReserve(reserve_, [&] { return folder_.save(session_); }); !saved) {
        return failed(std::move(saved.error()));
    }
    folder_.dropJournal();
    if (session_.activeCount() == 0) (void)folder_.removeEmptied();
    return failures;
}

std::vector<QuarantineEntry*>
QuarantineRestore::chosen(const std::optional<std::set<std::string>>& entryIDs) {
    std::vector<QuarantineEntry*> entries;
    for (QuarantineEntry& entry : session_.entries) {
        if (!entry.restored && (!entryIDs || entryIDs->contains(entry.storedName))) entries.push_back(&entry);
    }
    return entries;
}

// So that a crash is seen to have brought back what it did bring back. Where nothing can be written, undoing
// matters more than knowing later what was undone.
void QuarantineRestore::announce(const std::vector<QuarantineEntry*>& entries) const {
    if (entries.empty()) return;
    const std::vector<const QuarantineEntry*> lines(entries.begin(), entries.end());
    (void)withReserve(reserve_, [&]() -> Status {
        auto journal = folder_.openJournal();
        if (!journal) return failed(std::move(journal.error()));
        return QuarantineJournal::announceRestoring(*journal, lines);
    });
}

Status QuarantineRestore::moveBack(const QuarantineEntry& entry) const {
    const auto stored = folder_.item(entry.storedName);
    if (!stored || folder_.isAbsent(entry.storedName)) {
        return failed(QuarantineError::missing(folder_.itemPath(entry.storedName)));
    }
    const auto destination = RestoreDestination::open(paths_, policy_, entry.originalPath);
    if (!destination) return failed(destination.error());
    if (destination->isTaken()) return failed(QuarantineError::destinationExists(entry.originalPath));
    const auto place = destination->make();
    if (!place) return failed(place.error());
    auto moved = moveItem(*stored, *place);
    const bool isTaken =
        !moved && moved.error().domain == FailureDomain::posix && moved.error().code == EEXIST;
    return isTaken ? failed(QuarantineError::destinationExists(entry.originalPath)) : moved;
}

} // namespace loftmere
