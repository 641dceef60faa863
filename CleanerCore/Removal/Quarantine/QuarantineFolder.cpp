#include "CleanerCore/Removal/Quarantine/QuarantineFolder.h"

#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Files/JSONStore.h"
#include "CleanerCore/Platform/FileContent.h"
#include "CleanerCore/Platform/Removal.h"
#include "CleanerCore/Support/PathText.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <unordered_map>

namespace loftmere {

namespace {

constexpr const char* itemsName = "items";
constexpr const char* manifestName = "manifest.json";
constexpr const char* journalName = "journal.jsonl";
constexpr const char* purgedName = "purged"; // what the items are called once their purge has begun
constexpr const char* restoringKey = "restoring";

constexpr size_t reservedBytes = size_t{4} << 20;                // the manifests of some ten thousand items
constexpr auto plenty = static_cast<int64_t>(8 * reservedBytes); // with less, the space is for others

std::string reserveFile(const Paths& paths) {
    return paths.supportDir() + "/quarantine.reserve";
}

// Bytes that no file system can store in less space.
std::string filling() {
    std::string bytes(reservedBytes, '\0');
    uint64_t word = 1;
    for (size_t at = 0; at < bytes.size(); at += sizeof word) {
        word = word * 6364136223846793005U + 1442695040888963407U;
        std::memcpy(bytes.data() + at, &word, sizeof word);
    }
    return bytes;
}

bool isDiskFull(const Failure& failure) {
    return failure.domain == FailureDomain::posix && (failure.code == ENOSPC || failure.code == EDQUOT);
}

bool removeFile(const std::string& path) {
    const auto place = Place::open(path);
    return place && removeItem(*place).has_value();
}

// Runs `attempt`, and once more with the reserve given back when there was no space left.
template <class Attempt> auto withReserve(const std::string& reserve, const Attempt& attempt) {
    auto done = attempt();
    if (!done && isDiskFull(done.error()) && removeFile(reserve)) return attempt();
    return done;
}

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

void takeIn(QuarantineJournal& journal, std::string_view line) {
    const auto json = parseJson(line);
    if (!json) return;
    if (json->is_object() && json->contains(restoringKey)) {
        if (auto name = JsonCodec<std::string>::decode((*json)[restoringKey]))
            journal.restoring.insert(*name);
    } else if (auto entry = JsonCodec<QuarantineEntry>::decode(*json)) {
        journal.arriving.push_back(std::move(*entry));
    }
}

Status addLine(std::string& lines, const Json& json) {
    const auto line = writeJson(json, JsonStyle::compact);
    if (!line) return failed(line.error());
    lines += *line + "\n";
    return {};
}

// Empty when there is none. Fails when it is there and cannot be read: without it, the items that it lists
// would pass for nobody's.
Result<QuarantineJournal> readJournal(const std::string& path) {
    const auto text = readFile(path);
    if (!text && text.error().code == ENOENT) return QuarantineJournal{};
    if (!text) return failed(text.error());
    return QuarantineJournal::parse(*text);
}

} // namespace

QuarantineJournal QuarantineJournal::parse(std::string_view text) {
    QuarantineJournal journal;
    while (!text.empty()) {
        const size_t end = std::min(text.find('\n'), text.size());
        takeIn(journal, text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return journal;
}

QuarantineFolder::QuarantineFolder(const Paths& paths, Place place, OpenFolder folder,
                                   std::optional<OpenFolder> items)
    : reserve_(reserveFile(paths)),
      place_(std::move(place)),
      folder_(std::move(folder)),
      items_(std::move(items)) {}

Result<OpenFolder> QuarantineFolder::root(const Paths& paths) {
    auto place = Place::open(paths.quarantineDir());
    if (!place) return failed(std::move(place.error()));
    return place->asFolder();
}

Result<QuarantineFolder> QuarantineFolder::open(const Paths& paths, const std::string& sessionID) {
    if (!isSessionID(sessionID)) return failed(QuarantineError::invalidID(sessionID));
    auto quarantine = root(paths);
    if (!quarantine) return failed(std::move(quarantine.error()));
    Place place = quarantine->entry(sessionID);
    auto folder = place.asFolder();
    if (!folder) return failed(std::move(folder.error()));
    auto items = folder->subfolder(itemsName);
    if (items) return QuarantineFolder(paths, std::move(place), std::move(*folder), std::move(*items));
    // A folder without items holds nothing, but it is one.
    const int error = items.error().code;
    if (error == ENOENT || error == ENOTDIR || error == ELOOP)
        return QuarantineFolder(paths, std::move(place), std::move(*folder), std::nullopt);
    return failed(std::move(items.error()));
}

Result<QuarantineFolder> QuarantineFolder::create(const Paths& paths, const QuarantineSession& session) {
    return withReserve(reserveFile(paths), [&] { return createOnce(paths, session); });
}

Result<QuarantineFolder> QuarantineFolder::createOnce(const Paths& paths, const QuarantineSession& session) {
    for (const std::string& folder : {paths.supportDir(), paths.quarantineDir()}) {
        if (auto made = createDirectories(folder); !made) return failed(std::move(made.error()));
    }
    const auto quarantine = root(paths);
    if (!quarantine) return failed(quarantine.error());
    const auto folder = quarantine->subfolder(session.id, OpenFolder::Missing::createPrivate);
    if (!folder) return failed(folder.error());
    const auto items = folder->subfolder(itemsName, OpenFolder::Missing::createPrivate);
    if (!items) return failed(items.error());
    auto created = open(paths, session.id);
    if (!created) return created;
    if (auto saved = created->saveOnce(session); !saved) return failed(std::move(saved.error()));
    (void)created->place_.sync(); // the folder's own name
    return created;
}

void QuarantineFolder::keepReserve(const Paths& paths) {
    const std::string file = reserveFile(paths);
    if (FS::exists(file)) return;
    const auto space = FS::volumeSpace(parentPath(file));
    if (space && space->free >= plenty) (void)replaceFile(file, filling(), 0600);
}

Result<FileLock> QuarantineFolder::lock() const {
    auto lock = folder_.lock();
    if (!lock && lock.error().code == EWOULDBLOCK) return failed(QuarantineError::inUse(place_.name()));
    return lock;
}

std::optional<Date> QuarantineFolder::createdAt() const {
    const auto status = folder_.status();
    return status ? status->created : std::nullopt;
}

std::optional<Place> QuarantineFolder::item(const std::string& storedName) const {
    if (!items_ || !isEntryName(storedName)) return std::nullopt;
    return items_->entry(storedName);
}

bool QuarantineFolder::isAbsent(const std::string& storedName) const {
    if (!isEntryName(storedName)) return true;
    // What is in place of the items may be put right again, and they with it.
    const auto status = items_ ? items_->entry(storedName).status() : folder_.entry(itemsName).status();
    return !status && status.error() == ENOENT;
}

std::string QuarantineFolder::itemPath(const std::string& storedName) const {
    return joinPath(folder_.entry(itemsName).realPath(), storedName);
}

Result<std::optional<QuarantineSession>> QuarantineFolder::read() const {
    if (isPurged()) return std::nullopt;
    // The journal first: when it is gone by then, the manifest that is read after it is whole.
    const auto moves = readJournal(journalPath());
    if (!moves) return failed(moves.error());
    auto session = JSONStore::load<QuarantineSession>(manifest());
    if (!session) return session;
    session->id = place_.name(); // the manifest of a folder that was copied or renamed has another
    std::unordered_set<std::string> known;
    for (QuarantineEntry& entry : session->entries) {
        if (moves->restoring.contains(entry.storedName)) entry.restored |= isAbsent(entry.storedName);
        if (!moves->arriving.empty()) known.insert(entry.storedName);
    }
    for (const QuarantineEntry* entry : lastOfEachName(moves->arriving)) {
        if (!known.contains(entry->storedName) && !isAbsent(entry->storedName))
            session->entries.push_back(*entry);
    }
    noteBroughtBack(*session);
    return session;
}

// An undo on a full disk may have brought items back that nobody could write down.
void QuarantineFolder::noteBroughtBack(QuarantineSession& session) const {
    std::unordered_set<std::string> held;
    if (const auto listed = items_ ? items_->list() : std::nullopt) {
        for (const DirectoryEntry& entry : *listed) held.insert(entry.name);
    }
    for (QuarantineEntry& entry : session.entries) {
        if (entry.restored || held.contains(entry.storedName)) continue;
        entry.restored = isAbsent(entry.storedName) && FS::exists(entry.originalPath);
    }
}

Status QuarantineFolder::save(const QuarantineSession& session) const {
    return withReserve(reserve_, [&] { return saveOnce(session); });
}

void QuarantineFolder::saveMeanwhile(const QuarantineSession& session) const {
    (void)saveOnce(session);
}

Status QuarantineFolder::saveOnce(const QuarantineSession& session) const {
    if (items_) (void)items_->sync(); // a file system that cannot do this keeps an order of its own
    return JSONStore::save(session, manifest());
}

std::string QuarantineFolder::journalPath() const {
    return folder_.entry(journalName).realPath();
}

Status QuarantineFolder::openJournal() {
    if (journal_) return {};
    const bool isNew = !hasJournal();
    auto file = AppendFile::open(journalPath(), AppendFile::FinalLink::refuse);
    if (!file) return failed(std::move(file.error()));
    journal_ = std::move(*file);
    if (isNew) (void)folder_.sync();
    return {};
}

Status QuarantineFolder::announce(const std::string& lines) {
    return withReserve(reserve_, [&]() -> Status {
        if (auto opened = openJournal(); !opened) return opened;
        if (auto appended = journal_->append(lines); !appended) return appended;
        return journal_->sync();
    });
}

Status QuarantineFolder::announceArriving(std::span<const QuarantineEntry> entries) {
    std::string lines;
    for (const QuarantineEntry& entry : entries) {
        if (auto added = addLine(lines, JsonCodec<QuarantineEntry>::encode(entry)); !added) return added;
    }
    return announce(lines);
}

Status QuarantineFolder::announceRestoring(std::span<const QuarantineEntry* const> entries) {
    std::string lines;
    for (const QuarantineEntry* entry : entries) {
        if (auto added = addLine(lines, {{restoringKey, entry->storedName}}); !added) return added;
    }
    return announce(lines);
}

bool QuarantineFolder::hasJournal() const {
    return journal_ || FS::exists(journalPath());
}

void QuarantineFolder::dropJournal() {
    if (const Place journal = folder_.entry(journalName); journal.status()) (void)removeItem(journal);
    journal_.reset();
}

bool QuarantineFolder::isPurged() const {
    return folder_.entry(purgedName).status().has_value();
}

bool QuarantineFolder::isOrphan(Date now) const {
    constexpr double day = 86400;
    // A manifest that is damaged, or that cannot be looked at just now, is not missing.
    const auto manifest = folder_.entry(manifestName).status();
    if (manifest || manifest.error() != ENOENT) return false;
    const auto status = folder_.status();
    return status && secondsBetween(status->modified, now) > day;
}

Status QuarantineFolder::remove() const {
    const Place items = folder_.entry(itemsName);
    if (items.status() && !isPurged()) {
        if (auto decided = moveItem(items, folder_.entry(purgedName)); !decided) return decided;
        (void)folder_.sync();
    }
    if (const Place manifest = folder_.entry(manifestName); manifest.status()) {
        if (auto removed = removeItem(manifest); !removed) return removed;
    }
    return removeItem(place_);
}

Status QuarantineFolder::removeEmptied() const {
    const auto isNoItem = [](const DirectoryEntry& entry) { return entry.name == ".DS_Store"; };
    const auto left = items_ ? items_->list() : std::nullopt;
    const bool isEmptied = left ? std::ranges::all_of(*left, isNoItem) : !folder_.entry(itemsName).status();
    return isEmptied ? remove() : failed(Failure::posix(ENOTEMPTY, "delete", place_.realPath()));
}

} // namespace loftmere
