#pragma once

#include "CleanerCore/Platform/FileStatus.h"
#include "CleanerCore/Platform/posix/FileDescriptor.h"
#include "CleanerCore/Support/Result.h"

#include <expected>
#include <string>

namespace loftmere {

// Where an item stands: its folder, held open, and its name in that folder. Links in the parents are followed once,
// when the place is opened; whatever is decided about a place therefore stays true of what is done with it, also
// when someone exchanges a parent for a link in between.
class Place {
public:
    // Fails when the parent folder cannot be opened, or when the path names no entry of a folder ("/", "..").
    static Result<Place> open(const std::string& path);

    // The folder's real path, without links, and the name. This is what is to be judged before acting.
    const std::string& realPath() const { return realPath_; }
    const std::string& name() const { return name_; }
    int folder() const { return folder_.get(); }

    // The item itself, a link not followed; the errno value on failure.
    std::expected<FileStatus, int> status() const;

private:
    Place(FileDescriptor folder, std::string name, std::string realPath);

    FileDescriptor folder_;
    std::string name_;
    std::string realPath_;
};

} // namespace loftmere
