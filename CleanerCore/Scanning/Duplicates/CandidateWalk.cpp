#include "CleanerCore/Scanning/Duplicates/CandidateWalk.h"

#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Platform/Directory.h"
#include "CleanerCore/Support/PathText.h"
#include "CleanerCore/Support/Text.h"

#include <algorithm>
#include <array>
#include <span>
#include <string_view>

namespace loftmere {

namespace {

constexpr std::array<std::string_view, 4> skipDirs{".git", "node_modules", "Library", ".Trash"};

// A package is one document to the user, so its insides are nobody's copies.
constexpr std::array<std::string_view, 10> skipPackageExts{
    "app",       "photoslibrary", "musiclibrary", "fcpbundle", "logicx",
    "xcodeproj", "xcworkspace",   "sparsebundle", "bundle",    "framework",
};

bool isAmong(std::span<const std::string_view> table, const std::string& word) {
    return std::ranges::find(table, word) != table.end();
}

bool isEntered(const std::string& folderName) {
    return !isAmong(skipDirs, folderName) && !isAmong(skipPackageExts, pathExtension(folderName));
}

} // namespace

std::vector<ListedFile> CandidateWalk::below(std::vector<std::string> folders) {
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

// Roots that overlap and folders mounted at two places would show one file as its own copy.
bool CandidateWalk::isFirstVisit(const std::string& folder) {
    const auto status = linkStatus(folder);
    return status && status->type == FileType::directory &&
           visited_.emplace(status->device, status->inode).second;
}

void CandidateWalk::list(const std::string& folder, std::vector<std::string>& folders) {
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

void CandidateWalk::add(std::string path) {
    const auto status = linkStatus(path);
    if (status && status->size >= minBytes_) found_.push_back({std::move(path), *status});
}

} // namespace loftmere
