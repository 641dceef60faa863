#pragma once

#include "CleanerCore/Platform/RegularFile.h"
#include "CleanerCore/Scanning/Duplicates/ListedFile.h"

#include <optional>
#include <span>
#include <vector>

namespace loftmere {

// One content on disk that is being compared with others, under all the names it was found by. One thread at
// a time.
class ComparedFile {
public:
    // `names` lead to one inode and are not empty.
    explicit ComparedFile(std::vector<const ListedFile*> names) : names_(std::move(names)) {}

    // One entry for each inode, in the order of the list. Two paths to a file that has only one name are
    // views of the same entry, not copies: the later one is left out.
    static std::vector<ComparedFile> oneForEachInode(std::span<const ListedFile* const> files);

    // The names that have led to the file so far.
    const std::vector<const ListedFile*>& names() const { return names_; }

    // Opens the file for good. False when that is not possible any more, or when it has changed since it was
    // listed.
    bool open();
    bool isOpen() const { return file_.has_value(); }
    void close() { file_.reset(); }

    // Fills the block. False when the file cannot be read or ends too early. A file that is not open is
    // opened for this one call.
    bool read(int64_t offset, std::span<std::byte> block);

    // Drops the names that no longer lead to the file as it was listed.
    void dropChangedNames();

private:
    std::optional<RegularFile> opened();

    std::vector<const ListedFile*> names_;
    std::optional<RegularFile> file_;
};

} // namespace loftmere
