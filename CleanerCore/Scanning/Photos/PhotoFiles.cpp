#include "CleanerCore/Scanning/Photos/PhotoFiles.h"

#include "CleanerCore/Files/VisibleTree.h"
#include "CleanerCore/Support/PathText.h"
#include "CleanerCore/Support/Text.h"

#include <algorithm>
#include <filesystem>

namespace loftmere {

bool PhotoFiles::add(const std::string& root, std::span<const std::string_view> extensions,
                     const Visit& visit) {
    bool ended = false;
    walkVisibleTree(root, [&](const WalkEntry& entry) {
        ended = !visit(entry.path);
        if (ended) return WalkStep::stop;
        const std::string extension = asciiLowercased(pathExtension(entry.name));
        const bool isWanted = std::ranges::find(extensions, extension) != extensions.end();
        if (isWanted && entry.type == FileType::regular) addFile(entry);
        return WalkStep::proceed;
    });
    return !ended;
}

void PhotoFiles::addFile(const WalkEntry& entry) {
    const auto status = entry.status();
    if (!status || status->type != FileType::regular) return;
    if (status->links > 1 && !isNewName(entry.path)) return;
    const auto [known, isNew] = known_.try_emplace({status->device, status->inode}, files_.size());
    if (!isNew && status->links < 2) return;
    files_.push_back({.path = entry.path, .status = *status, .content = known->second});
}

bool PhotoFiles::isNewName(const std::string& path) {
    std::error_code failure;
    const auto real = std::filesystem::canonical(path, failure);
    return !failure && names_.insert(real.string()).second;
}

} // namespace loftmere
