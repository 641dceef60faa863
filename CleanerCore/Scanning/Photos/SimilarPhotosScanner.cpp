#include "CleanerCore/Scanning/Photos/SimilarPhotosScanner.h"

#include "CleanerCore/Scanning/Photos/DifferenceHash.h"
#include "CleanerCore/Scanning/Photos/LikenessGroups.h"
#include "CleanerCore/Scanning/Photos/PhotoFiles.h"
#include "CleanerCore/Scanning/Photos/ThumbnailSource.h"
#include "CleanerCore/Support/Concurrent.h"
#include "CleanerCore/Support/PathText.h"

#include <fmt/format.h>

#include <algorithm>
#include <tuple>

namespace loftmere {

namespace {

constexpr std::array<const char*, 4> roots{"Pictures", "Desktop", "Downloads", "Documents"};
constexpr size_t decodingThreads = 2;

// A picture that could be read. They stand in order of discovery, on which the groups depend.
struct Entry {
    const PhotoFile* file;
    SimilarPhotosScanner::Likeness likeness;
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
        if (!photos.add(context.homeURL(root), SimilarPhotosScanner::exts, visit)) return std::nullopt;
    }
    return photos;
}

// The files that are to be decoded, largest first, so that no thread is left with a large one at the end.
std::vector<size_t> decodingOrder(const std::vector<PhotoFile>& files) {
    std::vector<size_t> order;
    for (size_t i = 0; i < files.size(); ++i) {
        if (files[i].content == i) order.push_back(i);
    }
    std::ranges::stable_sort(order, std::ranges::greater{}, [&](size_t i) { return files[i].status.size; });
    return order;
}

std::optional<SimilarPhotosScanner::Likeness> likenessOf(const RegularFile& file,
                                                         const FS::CancelCheck& isCancelled) {
    const auto thumbnail = readThumbnail(file, isCancelled);
    if (!thumbnail) return std::nullopt;
    return SimilarPhotosScanner::Likeness{.hash = differenceHash(thumbnail->image),
                                          .pixelCount = thumbnail->pixelCount};
}

// The pictures among the files; of no use when cancelled meanwhile.
std::vector<Entry> readPhotos(const std::vector<PhotoFile>& files, const ScanContext& context) {
    std::vector<std::optional<SimilarPhotosScanner::Likeness>> likenesses(files.size());
    const std::vector<size_t> order = decodingOrder(files);
    concurrentPerform(order.size(), decodingThreads, [&](size_t position) {
        if (context.isCancelled()) return;
        const size_t i = order[position];
        context.report(CleanCategory::similarPhotos, files[i].path);
        // Nothing else is looked at that took the file's place since it was found, a link for one.
        if (const auto file = RegularFile::openUnchanged(files[i].path, files[i].status)) {
            likenesses[i] = likenessOf(*file, context.isCancelled);
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

} // namespace

std::optional<SimilarPhotosScanner::Likeness>
SimilarPhotosScanner::dHash(const std::string& path, const FS::CancelCheck& isCancelled) {
    const auto file = RegularFile::open(path);
    return file ? likenessOf(*file, isCancelled) : std::nullopt;
}

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

} // namespace loftmere
