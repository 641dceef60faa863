#pragma once

#include "CleanerCore/Platform/FileStatus.h"
#include "CleanerCore/Platform/posix/FileDescriptor.h"
#include "CleanerCore/Support/Result.h"

#include <expected>
#include <memory>
#include <optional>
#include <string>

namespace loftmere {

// Where an item stands: its folder, held open, and its name in that folder. Links in the parents are followed
// once, when the place is opened; whatever is decided about a place therefore stays true of what is done with
// it, also when someone exchanges a parent for a link in between. A value; copies share the open folder. Any
// thread.
class Place {
public:
    // Fails when the parent folder cannot be opened, when its real path cannot be told, or when the path
    // names no entry of a folder ("/", ".", ".."). The item itself need not exist. The path may be longer
    // than the system takes in one call.
    static Result<Place> open(const std::string& path);

    // The place of the path or, where its folders do not exist yet, that of the uppermost one that is
    // missing: where the path would be made. Absent when it cannot be told.
    static std::optional<Place> nearest(std::string path);

    // The folder's real path, without links, and the name. This is what is to be judged before acting.
    const std::string& realPath() const { return realPath_; }
    const std::string& name() const { return name_; }

    // The folder as a base for calls relative to it; it cannot be listed or synced through this descriptor.
    int folder() const { return folder_->get(); }

    // The item itself, a link not followed; the errno value on failure.
    std::expected<FileStatus, int> status() const;

    // Whether the folders of the two are on volumes that are known to differ, or reached through different
    // mounts of one, so that nothing can be moved from one to the other.
    bool isOnAnotherVolume(const Place& other) const;

    // Whether a volume, or a folder from elsewhere, is mounted on the item itself.
    bool isMountPoint() const;

    // Whether the folder's volume, or its mount, is known to let nothing be changed.
    bool isReadOnly() const;

    // Another name in the same folder. `name` must be a single component.
    Place beside(const std::string& name) const;

    // A name in the folder that stands here. Fails when that is no folder or a link to one; with `create` a
    // missing one is made.
    enum class Missing { fail, create };
    Result<Place> below(const std::string& name, Missing missing = Missing::fail) const;

    // Puts the folder's entries on the disk, with all renames in and out of it so far.
    Status sync() const;

private:
    Place(std::shared_ptr<const FileDescriptor> folder, std::string name, std::string realPath);

    std::shared_ptr<const FileDescriptor> folder_;
    std::string name_;
    std::string realPath_;
};

// Whether a name can be one entry of a folder: not empty, "." or "..", without "/" and NUL.
bool isEntryName(const std::string& name);

} // namespace loftmere
