#include "CleanerCore/Removal/Quarantine/QuarantineRestore.h"

#include "CleanerCore/Platform/Removal.h"
#include "CleanerCore/Safety/SafetyPolicy.h"
#include "CleanerCore/Support/ByteCount.h"
#include "CleanerCore/Support/PathText.h"
#include "CleanerCore/Support/Text.h"

#include <fmt/format.h>

#include <cerrno>

namespace loftmere {

namespace {

constexpr const char* noPlainPath = "its original path is not a plain full path";
constexpr const char* insideOwnFolder = "its original path lies in this program's own folder";
constexpr const char* throughLink = "the way to it runs through a link that leads elsewhere";
constexpr const char* neverTaken = "nothing is ever quarantined from there ({})";

bool isPlain(const std::string& path) {
    return path.size() > 1 && path.starts_with('/') && path == standardizedPathText(path) &&
           path.find('\0') == std::string::npos;
}

// Why nothing can have been taken from there; empty when something can.
std::string reasonAgainst(const SafetyPolicy& policy, const std::string& path, const std::string& realPath) {
    for (const std::string* each : {&path, &realPath}) {
        const auto verdict = policy.check(*each);
        if (const auto* blocked = std::get_if<SafetyPolicy::Blocked>(&verdict)) return blocked->reason;
        if (path == realPath) break;
    }
    return "";
}

// Where an item goes back to. Links on the way are followed once, so what is judged is what is used.
class Destination {
public:
    // Creates nothing. Fails for a place where no item can have been.
    static Result<Destination> open(const Paths& paths, const SafetyPolicy& policy,
                                    const std::string& originalPath);

    // Something is there already, be it a dangling link.
    bool isTaken() const { return below_.empty() && anchor_.status(); }

    // Creates the missing parent folders.
    Result<Place> make() const;

private:
    Destination(Place anchor, std::vector<std::string> below)
        : anchor_(std::move(anchor)), below_(std::move(below)) {}

    Place anchor_;                   // in the lowest folder of the way that exists
    std::vector<std::string> below_; // the rest of the way, from the item of `anchor_` on
};

Result<Destination> Destination::open(const Paths& paths, const SafetyPolicy& policy,
                                      const std::string& originalPath) {
    const auto refused = [&](const std::string& reason) {
        return failed(
            Failure::saying(fmt::format("{} cannot be restored: {}", printable(originalPath), reason)));
    };
    if (!isPlain(originalPath)) return refused(noPlainPath);
    std::string top = originalPath; // or the uppermost folder on the way that is missing
    auto anchor = Place::open(top);
    while (!anchor && anchor.error().code == ENOENT && top != "/") {
        top = parentPath(top);
        anchor = Place::open(top);
    }
    if (!anchor) return failed(std::move(anchor.error()));
    const std::string below = originalPath.substr(top.size());
    const std::string& realFolder = anchor->parent().realPath();
    const std::string realPath = anchor->realPath() + below;
    if (isAtOrUnder(realPath, realFolderPath(paths.supportDir()))) return refused(insideOwnFolder);
    const std::string realHome = realFolderPath(paths.home());
    const bool staysAtHome = isAtOrUnder(realFolder, realHome);
    if (realFolder != parentPath(top) && !staysAtHome) return refused(throughLink);
    const std::string spelled =
        staysAtHome ? joinPath(paths.home(), realPath.substr(realHome.size())) : realPath;
    if (const std::string reason = reasonAgainst(policy, originalPath, spelled); !reason.empty())
        return refused(fmt::format(neverTaken, reason));
    return Destination(std::move(*anchor), splitOmittingEmpty(below, '/'));
}

Result<Place> Destination::make() const {
    Place place = anchor_;
    for (const std::string& name : below_) {
        const auto folder = place.asFolder(Place::Missing::create);
        if (!folder) return failed(folder.error());
        place = folder->entry(name);
    }
    return place;
}

using Entries = std::vector<QuarantineEntry*>;

Entries chosen(QuarantineSession& session, const std::optional<std::set<std::string>>& entryIDs) {
    Entries entries;
    for (QuarantineEntry& entry : session.entries) {
        if (!entry.restored && (!entryIDs || entryIDs->contains(entry.storedName))) entries.push_back(&entry);
    }
    return entries;
}

Status moveBack(const Paths& paths, const SafetyPolicy& policy, const QuarantineFolder& folder,
                const QuarantineEntry& entry) {
    const auto stored = folder.item(entry.storedName);
    if (!stored || folder.isAbsent(entry.storedName)) {
        return failed(QuarantineError::missing(folder.itemPath(entry.storedName)));
    }
    const auto destination = Destination::open(paths, policy, entry.originalPath);
    if (!destination) return failed(destination.error());
    if (destination->isTaken()) return failed(QuarantineError::destinationExists(entry.originalPath));
    const auto place = destination->make();
    if (!place) return failed(place.error());
    auto moved = moveItem(*stored, *place);
    // Some file systems report an error for a rename that they have done.
    if (moved || (folder.isAbsent(entry.storedName) && place->status())) return {};
    const bool isTaken = moved.error().domain == FailureDomain::posix && moved.error().code == EEXIST;
    return isTaken ? failed(QuarantineError::destinationExists(entry.originalPath)) : moved;
}

} // namespace

std::string realFolderPath(const std::string& path) {
    const auto folder = OpenFolder::open(path);
    return folder ? folder->realPath() : path;
}

Result<Restored> restoreEntries(const Paths& paths, QuarantineFolder& folder, QuarantineSession session,
                                const std::optional<std::set<std::string>>& entryIDs) {
    const Entries entries = chosen(session, entryIDs);
    // After a crash the journal shows what was brought back. Where nothing can be written, undoing matters
    // more than knowing later what was undone.
    const std::vector<const QuarantineEntry*> lines(entries.begin(), entries.end());
    if (!lines.empty()) (void)folder.announceRestoring(lines);
    const SafetyPolicy policy(paths, {});
    Restored done;
    for (QuarantineEntry* entry : entries) {
        const Status moved = moveBack(paths, policy, folder, *entry);
        entry->restored = moved.has_value();
        if (moved) {
            ++done.count;
            addBytes(done.bytes, entry->size);
        } else {
            done.failures.push_back({entry->originalPath, moved.error().message});
        }
    }
    if (auto saved = folder.save(session); !saved) return failed(std::move(saved.error()));
    folder.dropJournal();
    if (session.activeCount() == 0) (void)folder.removeEmptied();
    return done;
}

} // namespace loftmere
