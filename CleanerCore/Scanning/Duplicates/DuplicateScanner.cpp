#include "CleanerCore/Scanning/Duplicates/DuplicateScanner.h"

#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Platform/FileStatus.h"
#include "CleanerCore/Platform/System.h"
#include "CleanerCore/Safety/SafetyPolicy.h"
#include "CleanerCore/Scanning/ScannerRegistry.h"
#include "CleanerCore/Support/Crew.h"
#include "CleanerCore/Support/PathText.h"
#include "CleanerCore/Support/Text.h"

#include <re2/re2.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <iterator>
#include <map>
#include <ranges>
#include <set>
#include <span>
#include <utility>

namespace loftmere {

namespace {

constexpr std::array defaultRoots{"Downloads", "Desktop", "Documents", "Movies", "Music", "Pictures"};

// More than there are cores: while some wait for the disk, others compare. With the files in memory this
// takes no longer.
constexpr size_t comparers = 8;
constexpr size_t openFilesEach = 16;

// How many files each comparer may hold open. All comparers together leave most descriptors to the other
// scanners, since a file that cannot be opened for lack of one would be missed as a copy.
size_t heldFilesEach() {
    return std::min(openFilesEach, descriptorLimit() / (4 * comparers));
}

std::vector<std::string> rootPaths(const std::optional<std::vector<std::string>>& roots,
                                   const ScanContext& context) {
    std::vector<std::string> paths;
    if (!roots) {
        for (const char* name : defaultRoots) paths.push_back(context.homeURL(name));
        return paths;
    }
    for (const std::string& root : *roots) {
        const bool isComplete = root.starts_with('/') || root.starts_with('~');
        paths.push_back(SafetyPolicy::normalize(isComplete ? root : context.homeURL(root), context.home()));
    }
    return paths;
}

constexpr std::array<std::string_view, 4> skipDirs{".git", "node_modules", "Library", ".Trash"};

// A package is one document to the user, so the files inside are not copies of anything.
constexpr std::array<std::string_view, 10> skipPackageExts{
    "app",       "photoslibrary", "musiclibrary", "fcpbundle", "logicx",
    "xcodeproj", "xcworkspace",   "sparsebundle", "bundle",    "framework",
};

bool isAmong(std::span<const std::string_view> table, const std::string& word) {
    return std::ranges::find(table, word) != table.end();
}

bool isEntered(const std::string& folderName) {
    return !isAmong(skipDirs, folderName) && !isAmong(skipPackageExts, pathExtension(folderName)) &&
           !FS::isPackageName(folderName);
}

// Lists the files that may be copies of each other, in one walk on one thread.
class CandidateWalk {
public:
    // `context` must outlive the walk. Files below `minBytes` logical bytes are left out.
    CandidateWalk(const ScanContext& context, int64_t minBytes) : context_(context), minBytes_(minBytes) {}

    // The files below those of the folders that are real ones, the last folder first. Each folder is
    // reported. A folder that cannot be read is skipped. When cancelled, the result is what has been found by
    // then.
    std::vector<ListedFile> below(std::vector<std::string> folders) {
        std::erase_if(folders, [](const std::string& folder) { return !FS::isDirectory(folder); });
        while (!folders.empty() && !context_.isCancelled()) {
            const std::string folder = std::move(folders.back());
            folders.pop_back();
            if (!isFirstVisit(folder)) continue;
            context_.report(CleanCategory::duplicates, folder);
            list(folder, folders);
        }
        return std::move(found_);
    }

private:
    // With overlapping roots, or a folder mounted in two places, a file would look like its own copy.
    bool isFirstVisit(const std::string& folder) {
        const auto status = linkStatus(folder);
        return status && status->type == FileType::directory &&
               visited_.emplace(status->device, status->inode).second;
    }

    void list(const std::string& folder, std::vector<std::string>& folders) {
        for (const DirectoryEntry& entry : readDirectory(folder).value_or(std::vector<DirectoryEntry>{})) {
            if (entry.name.starts_with('.') || entry.type == FileType::symlink || !isValidUTF8(entry.name))
                continue;
            if (entry.type != FileType::directory) {
                if (context_.isCancelled()) return;
                add(joinPath(folder, entry.name));
            } else if (isEntered(entry.name)) {
                folders.push_back(joinPath(folder, entry.name));
            }
        }
    }

    void add(std::string path) {
        const auto status = linkStatus(path);
        if (status && status->size >= minBytes_) found_.push_back({std::move(path), *status});
    }

    const ScanContext& context_;
    int64_t minBytes_;
    std::set<std::pair<uint64_t, uint64_t>> visited_; // device and inode
    std::vector<ListedFile> found_;
};

using FileGroup = std::vector<const ListedFile*>;

// A sparse file can claim more than its disk holds, and reading that could take years. Any other file is read
// in full, even if it takes minutes: not every file system reports the holes of a file correctly, and files
// that are taken for equal must be equal.
bool fitsItsDisk(const ListedFile& file) {
    constexpr int64_t readInSeconds = int64_t{4} << 30; // so the size of the disk does not matter
    if (file.size() <= readInSeconds) return true;
    const auto space = FS::volumeSpace(file.path);
    return !space || file.size() <= space->total;
}

// The groups with the most to read come first, so that no thread is left with a large one at the end.
std::vector<FileGroup> groupsOfOneSize(const std::vector<ListedFile>& files) {
    std::map<int64_t, FileGroup> bySize;
    for (const ListedFile& file : files) bySize[file.size()].push_back(&file);
    std::vector<FileGroup> groups;
    for (auto& [size, group] : bySize) {
        if (group.size() > 1 && fitsItsDisk(*group.front())) groups.push_back(std::move(group));
    }
    std::ranges::stable_sort(groups, std::greater(), [](const FileGroup& group) {
        return static_cast<double>(group.size()) * static_cast<double>(group.front()->size());
    });
    return groups;
}

std::vector<ContentGroups::Set> equalFiles(const std::vector<FileGroup>& groups, const ScanContext& context) {
    const auto proceed = [&](const std::string& path) {
        context.report(CleanCategory::duplicates, path);
        return !context.isCancelled();
    };
    std::vector<std::vector<ContentGroups::Set>> found(groups.size());
    std::atomic<size_t> next = 0;
    concurrentPerform(comparers, comparers, [&](size_t) {
        ContentGroups comparison(heldFilesEach(), proceed);
        for (size_t i = next++; i < groups.size() && !context.isCancelled(); i = next++) {
            found[i] = comparison.split(groups[i]);
        }
    });
    std::vector<ContentGroups::Set> sets;
    for (auto& some : found) std::ranges::move(some, std::back_inserter(sets));
    // In the order of the walk, whichever thread was first.
    std::ranges::sort(sets, {}, [](const ContentGroups::Set& set) { return set.front(); });
    return sets;
}

std::string withTilde(std::string text, const std::string& home) {
    for (size_t at = 0; !home.empty() && (at = text.find(home, at)) != std::string::npos; ++at) {
        text.replace(at, home.size(), "~");
    }
    return text;
}

void proposeAllButOne(const ContentGroups::Set& set, const ScanContext& context,
                      std::vector<ScanItem>& items) {
    std::vector<std::string> paths;
    for (const ListedFile* file : set) paths.push_back(file->path);
    const std::string keeper = DuplicateScanner::chooseKeeper(paths, context.home());
    for (const ListedFile* file : set) {
        if (file->path == keeper) continue;
        items.push_back(
            ScanItem::make({.target = PathTarget{file->path},
                            .size = file->size(),
                            .category = CleanCategory::duplicates,
                            .risk = Risk::review,
                            .reason = "Identical to " + withTilde(keeper, context.home()) + " (kept)",
                            .lastUsed = FS::lastUsedDate(file->path)}));
    }
}

// How little a path deserves to be kept, apart from its date.
std::pair<int, size_t> demerits(const std::string& path, std::string_view home) {
    static const RE2 secondCopy(R"(( copy| \(\p{Nd}+\)|-\p{Nd})\.)");
    const std::string landing[] = {joinPath(home, "Downloads/"), joinPath(home, "Desktop/")};
    int penalty = 0;
    if (std::ranges::any_of(landing, [&](const std::string& folder) { return path.starts_with(folder); }))
        penalty = 2;
    if (RE2::PartialMatch(lastPathComponent(path), secondCopy)) ++penalty;
    return {penalty, characterCount(path)};
}

} // namespace

std::vector<ListedFile> DuplicateScanner::files(const ScanContext& context) const {
    return CandidateWalk(context, minBytes).below(rootPaths(roots, context));
}

Result<std::vector<ScanItem>> DuplicateScanner::scan(const ScanContext& context) const {
    const std::vector<ListedFile> listed = files(context);
    std::vector<ScanItem> items;
    for (const ContentGroups::Set& set : equalFiles(groupsOfOneSize(listed), context)) {
        proposeAllButOne(set, context, items);
    }
    std::ranges::stable_sort(items, std::greater(), &ScanItem::size);
    return items;
}

std::string DuplicateScanner::chooseKeeper(const std::vector<std::string>& urls, std::string_view home) {
    const auto dateOf = [](const std::string& path) {
        return FS::modificationDate(path).value_or(distantFuture);
    };
    const std::string* best = &urls.front();
    auto least = demerits(*best, home);
    for (const std::string& url : urls | std::views::drop(1)) {
        const auto own = demerits(url, home);
        if (own > least || (own == least && dateOf(url) >= dateOf(*best))) continue;
        best = &url;
        least = own;
    }
    return *best;
}

ScannerRegistry::Scanner ScannerRegistry::makeDuplicateScanner() {
    return std::make_unique<DuplicateScanner>();
}

} // namespace loftmere
