#include "CleanerCore/Scanning/Duplicates/ComparedFile.h"

#include <map>

namespace loftmere {

std::vector<ComparedFile> ComparedFile::oneForEachInode(std::span<const ListedFile* const> files) {
    std::vector<ComparedFile> contents;
    contents.reserve(files.size());
    std::map<std::pair<uint64_t, uint64_t>, size_t> known;
    for (const ListedFile* file : files) {
        const auto [place, isNew] =
            known.try_emplace({file->status.device, file->status.inode}, contents.size());
        if (isNew)
            contents.emplace_back(std::vector{file});
        else if (file->status.links > 1)
            contents[place->second].names_.push_back(file);
    }
    return contents;
}

bool ComparedFile::open() {
    if (!file_) file_ = opened();
    return file_.has_value();
}

bool ComparedFile::read(int64_t offset, std::span<std::byte> block) {
    const std::optional<RegularFile> forThisCall = file_ ? std::nullopt : opened();
    const std::optional<RegularFile>& file = file_ ? file_ : forThisCall;
    return file && file->read(offset, block) == block.size();
}

void ComparedFile::dropChangedNames() {
    std::erase_if(names_, [](const ListedFile* name) {
        const auto now = linkStatus(name->path);
        return !now || !isSameUnchangedFile(*now, name->status);
    });
}

// A name that has vanished must not cost the others.
std::optional<RegularFile> ComparedFile::opened() {
    while (!names_.empty()) {
        const ListedFile& name = *names_.front();
        if (auto file = RegularFile::openUnchanged(name.path, name.status)) return file;
        names_.erase(names_.begin());
    }
    return std::nullopt;
}

} // namespace loftmere
