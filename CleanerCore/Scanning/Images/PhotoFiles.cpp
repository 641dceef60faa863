#include "CleanerCore/Scanning/Images/PhotoFiles.h"

#include "CleanerCore/Files/VisibleTree.h"
#include "CleanerCore/Support/PathText.h"
#include "CleanerCore/Support/Text.h"

#include <algorithm>
#include <filesystem>

namespace loftmere {

namespace {

bool isOneEntry(const std::string& a, const std::string& b) {
    std::error_code failure;
    const auto real = std::filesystem::canonical(a, failure);
    const auto other = failure ? real : std::filesystem::canonical(b, failure);
    return failure || real == other; // in doubt one, since then neither is proposed because of the other
}

} // namespace

bool PhotoFiles::add(const std::string& root, std::span<const std::string_view> extensions,
                     const Visit& visit) {
    bool ended = false;
    walkVisibleTree(root, [&](const WalkEntry& entry) {
        ended = !visit(entry.path);
        if (ended) return WalkStep::stop;
        const std::string extension = asciiLowercased(pathExtension(entry.name));
        const bool isWanted = std::ranges::find(extensions, extension) != extensions.end();
        if (isWanted && entry.type == FileType::regular) addFile(entry.path);
        return WalkStep::proceed;
    });
    return !ended;
}

void PhotoFiles::addFile(const std::string& path) {
    const auto status = linkStatus(path);
    if (!status || status->type != FileType::regular) return;
    PhotoFile file{
        .path = path, .size = status->size, .allocated = status->allocated, .content = files_.size()};
    const auto [known, isNew] = known_.try_emplace({status->device, status->inode}, files_.size());
    if (!isNew) {
        const PhotoFile& first = files_[known->second];
        if (status->links < 2 || isOneEntry(first.path, path)) return;
        file.content = known->second;
    }
    files_.push_back(std::move(file));
}

} // namespace loftmere
