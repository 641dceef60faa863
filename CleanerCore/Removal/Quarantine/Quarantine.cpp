#include "CleanerCore/Removal/Quarantine/Quarantine.h"

#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Platform/System.h"
#include "CleanerCore/Removal/Quarantine/QuarantineRestore.h"
#include "CleanerCore/Support/ByteCount.h"
#include "CleanerCore/Support/PathText.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <tuple>

namespace loftmere {

namespace {

constexpr double secondsOfDay = 86400;

// The names of all folders that may hold a session; none when the quarantine cannot be listed.
std::vector<std::string> sessionFolders(const Paths& paths) {
    const auto root = QuarantineFolder::root(paths);
    const auto entries = root ? root->list() : std::nullopt;
    std::vector<std::string> names;
    for (const DirectoryEntry& entry : entries.value_or(std::vector<DirectoryEntry>{})) {
        if (entry.type == FileType::directory && isSessionID(entry.name)) names.push_back(entry.name);
    }
    return names;
}

// "20260115-093012-7F3A9C", in local time. A second session in one folder would overwrite the first one's
// list.
std::string newSessionID(const Paths& paths, Date now) {
    const std::string moment = DateText::local(now, "%Y%m%d-%H%M%S");
    std::string id;
    do {
        id = fmt::format("{}-{}", moment, newUUID().substr(0, 6));
    } while (FS::exists(joinPath(paths.quarantineDir(), id)));
    return id;
}

} // namespace

Quarantine::Quarantine(const Paths& paths) : paths_(paths) {}

Quarantine::~Quarantine() {
    for (const auto& [id, writer] : writers_) (void)writer->finish();
}

Result<QuarantineSession> Quarantine::beginSession(const TriggerSource& trigger, int64_t retentionDays,
                                                   Date now) {
    const QuarantineSession session{
        .id = newSessionID(paths_, now),
        .createdAt = now,
        .expiresAt = addSeconds(now, std::max(static_cast<double>(retentionDays), 0.0) * secondsOfDay),
        .trigger = trigger,
        .entries = {},
    };
    if (auto made = QuarantineFolder::create(paths_, session); !made) return failed(std::move(made.error()));
    return session;
}

Result<QuarantineWriter*> Quarantine::writerOf(const std::string& sessionID) {
    const std::lock_guard guard(lock_);
    auto& writer = writers_[sessionID];
    if (!writer) {
        auto opened = QuarantineWriter::open(paths_, sessionID);
        if (!opened) {
            writers_.erase(sessionID);
            return failed(std::move(opened.error()));
        }
        writer = std::make_unique<QuarantineWriter>(std::move(*opened));
    }
    return writer.get();
}

void Quarantine::foresee(const QuarantineSession& session, std::vector<ForeseenItem> items) {
    if (auto writer = writerOf(session.id)) (*writer)->foresee(std::move(items));
}

Status Quarantine::add(const ClearedItem& item, int64_t size, CleanCategory category,
                       QuarantineSession& session) {
    auto writer = writerOf(session.id);
    if (!writer) return failed(std::move(writer.error()));
    const std::string& realPath = item.place().realPath();
    QuarantineEntry entry{.originalPath = item.path(), .storedName = "", .size = size, .category = category};
    const bool isReachedByLink = realPath != item.path();
    if (isReachedByLink && !isAtOrUnder(realPath, realFolderPath(paths_.home())))
        entry.originalPath = realPath;
    return (*writer)->add(item.place(), std::move(entry), session);
}

Status Quarantine::finish(const QuarantineSession& session) {
    auto writer = writerOf(session.id);
    if (!writer) return failed(std::move(writer.error()));
    Status finished = (*writer)->finish(session);
    letGo(session.id);
    QuarantineFolder::keepReserve(paths_);
    return finished;
}

// Ends this object's own writing of a session, so that its lock is free.
void Quarantine::letGo(const std::string& sessionID) {
    const std::lock_guard guard(lock_);
    const auto writer = writers_.find(sessionID);
    if (writer == writers_.end()) return;
    (void)writer->second->finish();
    writers_.erase(writer);
}

Result<Restored> Quarantine::restore(const std::string& sessionID,
                                     const std::optional<std::set<std::string>>& entryIDs) {
    letGo(sessionID);
    auto folder = QuarantineFolder::open(paths_, sessionID);
    if (!folder && folder.error().code == ENOENT) return Restored{};
    if (!folder) return failed(std::move(folder.error()));
    const auto lock = folder->lock();
    if (!lock) return failed(lock.error());
    auto session = folder->read();
    if (!session) return failed(std::move(session.error()));
    if (!*session) return Restored{};
    return restoreEntries(paths_, *folder, std::move(**session), entryIDs);
}

std::vector<QuarantineSession> Quarantine::sessions() const {
    struct Found {
        QuarantineSession session;
        std::optional<Date> createdAt; // of the folder
    };
    std::vector<Found> found;
    for (const std::string& name : sessionFolders(paths_)) {
        const auto folder = QuarantineFolder::open(paths_, name);
        if (!folder) continue;
        auto session = folder->read();
        if (session && *session) found.push_back({std::move(**session), folder->createdAt()});
    }
    // Several cleans may begin in one second, and the manifest says no more than that.
    std::ranges::sort(found, std::ranges::greater(), [](const Found& one) {
        return std::tie(one.session.createdAt, one.createdAt, one.session.id);
    });
    std::vector<QuarantineSession> all;
    for (Found& one : found) all.push_back(std::move(one.session));
    return all;
}

std::vector<std::string> Quarantine::unreadable(const std::vector<QuarantineSession>& listed) const {
    std::vector<std::string> names = sessionFolders(paths_);
    std::erase_if(names, [&](const std::string& name) {
        return std::ranges::find(listed, name, &QuarantineSession::id) != listed.end();
    });
    std::ranges::sort(names);
    return names;
}

Status Quarantine::check() const {
    const auto root = QuarantineFolder::root(paths_);
    if (!root) return root.error().code == ENOENT ? Status() : failed(root.error());
    if (!root->list()) return failed(Failure::posix(EACCES, "read", root->realPath()));
    return {};
}

int64_t Quarantine::totalSize() const {
    int64_t total = 0;
    for (const QuarantineSession& session : sessions()) addBytes(total, session.totalSize());
    return total;
}

Status Quarantine::purge(const std::string& sessionID) {
    letGo(sessionID);
    const auto folder = QuarantineFolder::open(paths_, sessionID);
    if (!folder) return failed(folder.error());
    const auto lock = folder->lock();
    if (!lock) return failed(lock.error());
    return folder->remove();
}

int64_t Quarantine::purgeExpired(Date now) {
    int64_t freed = 0;
    for (const QuarantineSession& session : sessions()) {
        if (session.expiresAt > now) continue;
        const auto folder = QuarantineFolder::open(paths_, session.id);
        if (!folder || !folder->lock()) continue; // being written
        addBytes(freed, session.totalSize());
        (void)purge(session.id);
    }
    sweep(now);
    QuarantineFolder::keepReserve(paths_);
    return freed;
}

void Quarantine::sweep(Date now) const {
    for (const std::string& name : sessionFolders(paths_)) {
        const auto folder = QuarantineFolder::open(paths_, name);
        if (folder && (folder->isPurged() || folder->isOrphan(now)) && folder->lock()) (void)folder->remove();
    }
}

} // namespace loftmere
