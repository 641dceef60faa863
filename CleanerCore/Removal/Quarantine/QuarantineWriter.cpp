#include "CleanerCore/Removal/Quarantine/QuarantineWriter.h"

#include "CleanerCore/Platform/Removal.h"
#include "CleanerCore/Platform/Volume.h"
#include "CleanerCore/Support/PathText.h"
#include "CleanerCore/Support/Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>

namespace loftmere {

namespace {

constexpr size_t firstSave = 64; // the manifest is saved at each doubling from here on, and at the end
constexpr size_t smallestWindow = 8;
constexpr size_t largestWindow = 512;
constexpr size_t longestName = 255;

// The number of entries before it, "-" and the item's own name, cut to the length that a name may have.
std::string storedNameOf(size_t count, const std::string& name) {
    return std::string(wholeCharacters(std::to_string(count) + "-" + name, longestName));
}

// The name cannot be written down, so the item could not be brought back.
Failure unreadableName(const std::string& path) {
    return Failure::saying(
        fmt::format("{} has a name that is not valid text, so it could not be brought back from quarantine",
                    printable(path)));
}

} // namespace

Status mayMoveWhole(const Place& place, const std::vector<std::string>& mountPoints) {
    for (const std::string& point : mountPoints) {
        if (!isAtOrUnder(point, place.realPath())) continue;
        const auto mounted = Place::open(point);
        if (!mounted || !mounted->isMountPoint()) continue;
        return failed(Failure::saying(
            fmt::format("Could not move {}: another volume is mounted there", printable(place.realPath()))));
    }
    return {};
}

QuarantineWriter::QuarantineWriter(QuarantineFolder folder, FileLock lock)
    : mountPoints_(mountPoints()),
      folder_(std::move(folder)),
      lock_(std::move(lock)),
      nextSave_(firstSave),
      window_(smallestWindow) {}

Result<QuarantineWriter> QuarantineWriter::open(const Paths& paths, const std::string& sessionID) {
    auto folder = QuarantineFolder::open(paths, sessionID);
    if (!folder) return failed(std::move(folder.error()));
    auto lock = folder->lock();
    if (!lock) return failed(std::move(lock.error()));
    const auto session = folder->read();
    if (!session) return failed(session.error());
    if (!*session) return failed(Failure::posix(ENOENT, "read", folder->itemPath("")));
    QuarantineWriter writer(std::move(*folder), std::move(*lock));
    writer.count_ = (*session)->entries.size();
    writer.nextSave_ = std::max(firstSave, 2 * writer.count_);
    return writer;
}

void QuarantineWriter::foresee(std::vector<ForeseenItem> items) {
    foreseen_ = std::move(items);
    foreseenAt_.clear();
    for (size_t i = 0; i < foreseen_.size(); ++i) foreseenAt_.emplace(foreseen_[i].originalPath, i);
}

Status QuarantineWriter::add(const Place& place, QuarantineEntry entry, QuarantineSession& session) {
    // Another copy of the session has been added to: going on from this one would forget its entries.
    if (session.entries.size() != count_) return failed(QuarantineError::inUse(session.id));
    if (!isValidUTF8(entry.originalPath) || !isValidUTF8(place.name()))
        return failed(unreadableName(entry.originalPath));
    entry.storedName = storedNameOf(count_, lastPathComponent(entry.originalPath));
    const auto stored = folder_.item(entry.storedName);
    if (!stored) return failed(QuarantineError::missing(folder_.itemPath(entry.storedName)));
    if (auto may = mayMoveWhole(place, mountPoints_); !may) return may;
    if (auto announced = ensureAnnounced(entry); !announced) return announced;
    // Some file systems report an error for a rename that they have done. The name was free before.
    if (auto moved = moveItem(place, *stored); !moved && !stored->status()) {
        if (moved.error().code == EXDEV) return failed(QuarantineError::differentVolume(place.name()));
        return moved;
    }
    session.entries.push_back(std::move(entry));
    ++count_;
    ++arrived_;
    saveNowAndThen(session);
    return {};
}

Status QuarantineWriter::ensureAnnounced(const QuarantineEntry& entry) {
    const bool isNext = arrived_ < announced_.size() && announced_[arrived_] == entry;
    if (isNext) return {};
    // The window grows while it serves to its end.
    window_ = arrived_ == announced_.size() ? std::min(2 * window_, largestWindow) : smallestWindow;
    announced_.clear();
    arrived_ = 0;
    std::vector<QuarantineEntry> window = withFollowing(entry);
    if (window.empty()) return failed(Failure::posix(EEXIST, "move", entry.originalPath));
    if (auto written = folder_.announceArriving(window); !written) return written;
    announced_ = std::move(window);
    return {};
}

// The entry and those expected after it. A name that is taken must not be announced: its item would pass for
// the one that was announced last. Empty when the entry's own name is taken.
std::vector<QuarantineEntry> QuarantineWriter::withFollowing(const QuarantineEntry& entry) {
    std::vector<QuarantineEntry> window;
    if (!folder_.isAbsent(entry.storedName)) return window;
    window.push_back(entry);
    const auto known = foreseenAt_.find(entry.originalPath);
    if (known == foreseenAt_.end()) return window;
    for (size_t at = known->second + 1; at < foreseen_.size() && window.size() < window_; ++at) {
        const ForeseenItem& next = foreseen_[at];
        const std::string name = storedNameOf(count_ + window.size(), lastPathComponent(next.originalPath));
        if (!isValidUTF8(next.originalPath) || !folder_.isAbsent(name)) break;
        window.push_back({next.originalPath, name, next.size, next.category});
    }
    return window;
}

// What the manifest lacks is in the journal.
void QuarantineWriter::saveNowAndThen(const QuarantineSession& session) {
    if (count_ < nextSave_) return;
    nextSave_ = 2 * count_;
    folder_.saveMeanwhile(session);
}

Status QuarantineWriter::finish(const QuarantineSession& session) {
    if (!folder_.hasJournal()) return {};
    if (session.entries.size() != count_) return finish(); // an older copy must not forget entries
    if (auto saved = folder_.save(session); !saved) return saved;
    folder_.dropJournal();
    announced_.clear();
    arrived_ = 0;
    return {};
}

Status QuarantineWriter::finish() {
    if (!folder_.hasJournal()) return {};
    const auto session = folder_.read();
    if (!session) return failed(session.error());
    if (!*session) return {}; // a manifest that cannot be read is left to whoever can read it
    count_ = (*session)->entries.size();
    return finish(**session);
}

} // namespace loftmere
