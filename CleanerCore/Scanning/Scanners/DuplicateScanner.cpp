#include "CleanerCore/Scanning/Scanners/DuplicateScanner.h"

#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Platform/Directory.h"
#include "CleanerCore/Removal/SafetyPolicy.h"
#include "CleanerCore/Scanning/ContentGroups.h"
#include "CleanerCore/Support/Concurrent.h"
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

namespace loftmere {

namespace {

constexpr std::array defaultRoots{"Downloads", "Desktop", "Documents", "Movies", "Music", "Pictures"};

constexpr std::array<std::string_view, 4> skipDirs{".git", "node_modules", "Library", ".Trash"};

// A package is one document to the user, so its insides are nobody's copies.
constexpr std::array<std::string_view, 10> skipPackageExts{
    "app",       "photoslibrary", "musiclibrary", "fcpbundle", "logicx",
    "xcodeproj", "xcworkspace",   "sparsebundle", "bundle",    "framework",
};

// The two cores of a small machine are kept busy; the other scanners run at the same time.
constexpr size_t comparers = 2;
constexpr size_t openFilesEach = 64;

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

bool isAmong(std::span<const std::string_view> table, const std::string& word) {
    return std::ranges::find(table, word) != table.end();
}

bool isEntered(const std::string& folderName) {
    return !isAmong(skipDirs, folderName) && !isAmong(skipPackageExts, pathExtension(folderName));
}

// The state of one walk.
class Walk {
public:
    Walk(const ScanContext& context, int64_t minBytes) : context_(context), minBytes_(minBytes) {}

    std::vector<ListedFile> below(std::vector<std::string> folders) {
        std::erase_if(folders, [](const std::string& root) { return !FS::isDirectory(root); });
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
    // Roots that overlap and folders mounted at two places would show one file as its own copy.
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
    std::set<std::pair<uint64_t, uint64_t>> visited_;
    std::vector<ListedFile> found_;
};

using FileGroup = std::vector<const ListedFile*>;

// Those of one size, the groups with the most to read first so that no thread is left with a large one at the
// end.
std::vector<FileGroup> groupsOfOneSize(const std::vector<ListedFile>& files) {
    std::map<int64_t, FileGroup> bySize;
    for (const ListedFile& file : files) bySize[file.size()].push_back(&file);
    std::vector<FileGroup> groups;
    for (auto& [size, group] : bySize) {
        if (group.size() > 1) groups.push_back(std::move(group));
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
        ContentGroups comparison(openFilesEach, proceed);
        for (size_t i = next++; i < groups.size() && !context.isCancelled(); i = next++) {
            found[i] = comparison.split(groups[i]);
        }
    });
    std::vector<ContentGroups::Set> sets;
    for (auto& some : found) std::ranges::move(some, std::back_inserter(sets));
    // The order of the walk, whichever thread was first.
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

// How little a path deserves to be kept, the date aside.
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
    return Walk(context, minBytes).below(rootPaths(roots, context));
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

} // namespace loftmere
