#include "CleanerCore/Removal/Quarantine/QuarantineFolder.h"

#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Files/JSONStore.h"
#include "CleanerCore/Platform/Directory.h"
#include "CleanerCore/Platform/FileContent.h"
#include "CleanerCore/Platform/Removal.h"
#include "CleanerCore/Removal/Quarantine/QuarantineError.h"
#include "CleanerCore/Support/PathText.h"

#include <algorithm>
#include <cerrno>
#include <unordered_map>

namespace loftmere {

namespace {

constexpr const char* itemsName = "items";

// The last line that names an item is the one under which it was moved.
std::vector<const QuarantineEntry*> lastOfEachName(const std::vector<QuarantineEntry>& entries) {
    std::unordered_map<std::string_view, size_t> last;
    for (size_t i = 0; i < entries.size(); ++i) last[entries[i].storedName] = i;
    std::vector<const QuarantineEntry*> kept;
    for (size_t i = 0; i < entries.size(); ++i) {
        if (last[entries[i].storedName] == i) kept.push_back(&entries[i]);
    }
    return kept;
}

} // namespace

Result<QuarantineFolder> QuarantineFolder::open(const Paths& paths, const std::string& sessionID) {
    if (!isEntryName(sessionID)) return failed(QuarantineError::invalidID(sessionID));
    auto place = Place::open(joinPath(paths.quarantineDir(), sessionID));
    if (!place) return failed(std::move(place.error()));
    auto folder = place->below(itemsName);
    if (!folder) return failed(std::move(folder.error()));
    auto items = folder->below("0");
    if (items) return QuarantineFolder(std::move(*place), std::move(*items));
    // A folder without items holds nothing, but it is one.
    const int error = items.error().code;
    if (error == ENOENT || error == ENOTDIR || error == ELOOP)
        return QuarantineFolder(std::move(*place), std::nullopt);
    return failed(std::move(items.error()));
}

Result<QuarantineFolder> QuarantineFolder::create(const Paths& paths, const QuarantineSession& session) {
    const std::string folder = joinPath(paths.quarantineDir(), session.id);
    if (auto made = createDirectories(joinPath(folder, itemsName)); !made)
        return failed(std::move(made.error()));
    auto created = open(paths, session.id);
    if (!created) return created;
    if (auto saved = created->save(session); !saved) return failed(std::move(saved.error()));
    (void)created->place_.sync(); // the folder's own name
    return created;
}

Result<FileLock> QuarantineFolder::lock() const {
    auto lock = FileLock::acquireFolder(place_);
    if (!lock && lock.error().code == EWOULDBLOCK) return failed(QuarantineError::inUse(place_.name()));
    return lock;
}

std::optional<Date> QuarantineFolder::made() const {
    const auto status = place_.status();
    return status ? status->created : std::nullopt;
}

std::string QuarantineFolder::journal() const {
    return joinPath(place_.realPath(), QuarantineJournal::fileName);
}

std::optional<Place> QuarantineFolder::item(const std::string& storedName) const {
    if (!items_ || !isEntryName(storedName)) return std::nullopt;
    return items_->beside(storedName);
}

bool QuarantineFolder::isAbsent(const std::string& storedName) const {
    const auto stored = item(storedName);
    // What stands in place of the items may be put right again, and they with it.
    if (!stored) return !isEntryName(storedName) || !FS::exists(joinPath(place_.realPath(), itemsName));
    const auto status = stored->status();
    return !status && status.error() == ENOENT;
}

std::string QuarantineFolder::itemPath(const std::string& storedName) const {
    return joinPath(joinPath(place_.realPath(), itemsName), storedName);
}

Result<std::optional<QuarantineSession>> QuarantineFolder::read() const {
    // The journal first: when it is gone by then, the manifest read after it is whole.
    const auto moves = QuarantineJournal::read(journal());
    if (!moves) return failed(moves.error());
    auto session = JSONStore::load<QuarantineSession>(manifest());
    if (!session) return session;
    session->id = place_.name(); // of a folder that was copied or renamed, the manifest tells another
    std::unordered_set<std::string> known;
    for (QuarantineEntry& entry : session->entries) {
        if (moves->restoring.contains(entry.storedName)) entry.restored |= isAbsent(entry.storedName);
        if (!moves->arriving.empty()) known.insert(entry.storedName);
    }
    for (const QuarantineEntry* entry : lastOfEachName(moves->arriving)) {
        if (!known.contains(entry->storedName) && !isAbsent(entry->storedName))
            session->entries.push_back(*entry);
    }
    return session;
}

Status QuarantineFolder::save(const QuarantineSession& session) const {
    if (items_) (void)items_->sync(); // where a file system cannot, the order is its own
    return JSONStore::save(session, manifest());
}

Result<AppendFile> QuarantineFolder::openJournal() const {
    const bool isNew = !hasJournal();
    auto file = AppendFile::open(journal(), AppendFile::FinalLink::refuse);
    if (!file || !isNew) return file;
    if (auto inner = place_.below("0")) (void)inner->sync();
    return file;
}

bool QuarantineFolder::hasJournal() const {
    return FS::exists(journal());
}

void QuarantineFolder::dropJournal() const {
    if (auto place = place_.below(QuarantineJournal::fileName); place && place->status())
        (void)removeItem(*place);
}

Status QuarantineFolder::remove() const {
    if (auto items = place_.below(itemsName); items && items->status()) {
        if (auto removed = removeItem(*items); !removed) return removed;
    }
    return removeItem(place_);
}

Status QuarantineFolder::removeEmptied() const {
    const std::string items = itemPath("");
    const auto isNoItem = [](const DirectoryEntry& entry) { return entry.name == ".DS_Store"; };
    const auto left = readDirectory(items);
    const bool isEmptied = left ? std::ranges::all_of(*left, isNoItem) : !FS::isReachable(items);
    return isEmptied ? remove() : failed(Failure::posix(ENOTEMPTY, "delete", place_.realPath()));
}

} // namespace loftmere
