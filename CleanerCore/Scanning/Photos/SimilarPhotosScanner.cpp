#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Platform/Place.h"
#include "CleanerCore/Scanning/Photos/Likeness.h"
#include "CleanerCore/Scanning/ScannerRegistry.h"
#include "CleanerCore/Support/Crew.h"
#include "CleanerCore/Support/PathText.h"
#include "CleanerCore/Support/Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <map>
#include <string_view>
#include <tuple>
#include <unordered_set>
#include <utility>

namespace loftmere {

namespace {

constexpr std::array<const char*, 4> roots{"Pictures", "Desktop", "Downloads", "Documents"};
constexpr std::array<std::string_view, 8> exts{"jpg", "jpeg", "png", "heic", "heif", "tiff", "tif", "webp"};
constexpr size_t decodingThreads = 2;

// A file that may be a photograph, found by its name.
struct PhotoFile {
    std::string path;
    FileStatus status;
    size_t content = 0; // index of the first file found that is the same one under another name, else its own
};

// Gathers the regular files with one of the extensions, in order of discovery.
class PhotoFiles {
public:
    // Asked for each visible entry before it is looked at. False ends the walk.
    using Visit = std::function<bool(const std::string& path)>;

    // Adds what is visible below a folder. A folder that cannot be read adds nothing. `root` may lead to
    // files that were found before, through a link; they are not added again. False when `visit` has ended
    // the walk.
    bool add(const std::string& root, const Visit& visit) {
        bool ended = false;
        FS::walkVisibleTree(root, [&](const WalkEntry& entry) {
            ended = !visit(entry.path);
            if (ended) return WalkStep::stop;
            const std::string extension = asciiLowercased(pathExtension(entry.name));
            const bool isWanted = std::ranges::find(exts, extension) != exts.end();
            if (isWanted && entry.type == FileType::regular) addFile(entry);
            return WalkStep::proceed;
        });
        return !ended;
    }

    const std::vector<PhotoFile>& files() const { return files_; }

private:
    void addFile(const WalkEntry& entry) {
        const auto status = entry.status();
        if (!status || status->type != FileType::regular) return;
        if (status->links > 1 && !isNewName(entry.path)) return;
        const auto [known, isNew] = known_.try_emplace({status->device, status->inode}, files_.size());
        if (!isNew && status->links < 2) return;
        files_.push_back({.path = entry.path, .status = *status, .content = known->second});
    }

    bool isNewName(const std::string& path) {
        const auto place = Place::open(path);
        return place && names_.insert(place->realPath()).second;
    }

    std::vector<PhotoFile> files_;
    std::map<std::pair<uint64_t, uint64_t>, size_t> known_; // by device and inode
    std::unordered_set<std::string> names_;                 // real paths of the files that have several names
};

// A picture that could be read. Entries are in order of discovery, on which the groups depend.
struct Entry {
    const PhotoFile* file;
    Likeness likeness;
};

// Absent when cancelled.
std::optional<PhotoFiles> findPhotos(const ScanContext& context) {
    PhotoFiles photos;
    const auto visit = [&](const std::string& path) {
        if (context.isCancelled()) return false;
        context.report(CleanCategory::similarPhotos, path);
        return true;
    };
    for (const char* root : roots) {
        if (!photos.add(context.homeURL(root), visit)) return std::nullopt;
    }
    return photos;
}

// The files to decode, largest first, so that no thread is left with a large one at the end.
std::vector<size_t> decodingOrder(const std::vector<PhotoFile>& files) {
    std::vector<size_t> order;
    for (size_t i = 0; i < files.size(); ++i) {
        if (files[i].content == i) order.push_back(i);
    }
    std::ranges::stable_sort(order, std::ranges::greater{}, [&](size_t i) { return files[i].status.size; });
    return order;
}

// The pictures among the files. The result is of no use when the scan is cancelled meanwhile.
std::vector<Entry> readPhotos(const std::vector<PhotoFile>& files, const ScanContext& context) {
    std::vector<std::optional<Likeness>> likenesses(files.size());
    const std::vector<size_t> order = decodingOrder(files);
    concurrentPerform(order.size(), decodingThreads, [&](size_t position) {
        if (context.isCancelled()) return;
        const size_t i = order[position];
        context.report(CleanCategory::similarPhotos, files[i].path);
        // Anything that took the file's place since it was found, such as a link, is not read.
        if (const auto file = RegularFile::openUnchanged(files[i].path, files[i].status)) {
            if (const auto found = likenessOf(*file, context.isCancelled)) likenesses[i] = *found;
        }
    });
    std::vector<Entry> entries;
    for (const PhotoFile& file : files) {
        if (const auto likeness = likenesses[file.content]) entries.push_back({&file, *likeness});
    }
    return entries;
}

std::vector<std::vector<size_t>> groupsOf(const std::vector<Entry>& entries, const ScanContext& context) {
    std::vector<uint64_t> hashes;
    for (const Entry& entry : entries) hashes.push_back(entry.likeness.hash);
    return LikenessGroups::of(hashes, context.isCancelled);
}

// The best of a group: the most pixels, then the most bytes on disk, then the first found.
size_t keeperOf(const std::vector<size_t>& group, const std::vector<Entry>& entries) {
    return *std::ranges::max_element(group, {}, [&](size_t i) {
        return std::tuple(entries[i].likeness.pixelCount, entries[i].file->status.allocated, -int64_t(i));
    });
}

ScanItem itemFor(const PhotoFile& file, const std::string& keeperName) {
    return ScanItem::make({.target = PathTarget{file.path},
                           .size = file.status.allocated,
                           .category = CleanCategory::similarPhotos,
                           .risk = Risk::review,
                           .reason = fmt::format("Looks like {} (kept: higher quality)", keeperName),
                           .lastUsed = FS::lastUsedDate(file.path)});
}

// Finds photographs that look alike though their bytes differ (exported again, shot in a burst, made
// smaller), keeps the best of each set and proposes the others for review. Finds nothing when it is cancelled
// before all pictures have been read, since an incomplete set could propose its best member.
class SimilarPhotosScanner : public JunkScanner {
public:
    CleanCategory category() const override { return CleanCategory::similarPhotos; }
    Result<std::vector<ScanItem>> scan(const ScanContext& context) const override;
};

Result<std::vector<ScanItem>> SimilarPhotosScanner::scan(const ScanContext& context) const {
    std::vector<ScanItem> items;
    const auto photos = findPhotos(context);
    if (!photos) return items;
    const std::vector<Entry> entries = readPhotos(photos->files(), context);
    if (context.isCancelled()) return items;
    for (const std::vector<size_t>& group : groupsOf(entries, context)) {
        const size_t keeper = keeperOf(group, entries);
        const std::string keeperName = lastPathComponent(entries[keeper].file->path);
        for (const size_t member : group) {
            if (member != keeper) items.push_back(itemFor(*entries[member].file, keeperName));
        }
    }
    return items;
}

} // namespace

ScannerRegistry::Scanner ScannerRegistry::makeSimilarPhotosScanner() {
    return std::make_unique<SimilarPhotosScanner>();
}

} // namespace loftmere
