#pragma once

#include "CleanerCore/Platform/FileDescriptor.h"
#include "CleanerCore/Platform/FileLock.h"
#include "CleanerCore/Platform/FileStatus.h"
#include "CleanerCore/Support/Result.h"

#include <expected>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace loftmere {

class Place;

// A folder, held open. Links on the way to it are followed once, when it is opened; everything done through
// this object then happens in that very folder, also when someone moves it or exchanges a parent for a link.
// A value; copies share the open folder. Any thread.
class OpenFolder {
public:
    // What to do about a folder that does not exist.
    enum class Missing { fail, create, createPrivate };

    // Fails when the folder cannot be opened or when its real path cannot be found. The path may be longer
    // than the system takes in one call.
    static Result<OpenFolder> open(const std::string& path);

    // The path without links, as it was when the folder was opened.
    const std::string& realPath() const { return open_->realPath; }

    // A base for calls relative to the folder. It cannot be listed or synced through this descriptor.
    int descriptor() const { return open_->descriptor.get(); }

    // The errno value on failure. `addedToFolder` may be absent.
    std::expected<FileStatus, int> status() const;

    // Whether the two are on volumes that are known to differ, or are reached through different mounts of
    // one, so that nothing can be moved from one to the other.
    bool isOnAnotherVolume(const OpenFolder& other) const;

    // Whether the volume, or its mount, is known to be read-only.
    bool isReadOnly() const;

    // What has, or would get, this name here. `name` must be a single component.
    Place entry(const std::string& name) const;

    // The folder with this name; a link to one is refused. A new one gets the mode 0755, or 0700
    // when it is private.
    Result<OpenFolder> subfolder(const std::string& name, Missing missing = Missing::fail) const;

    // As `readDirectory`.
    std::optional<std::vector<DirectoryEntry>> list() const;

    // Puts the folder's entries on the disk, with all renames in and out of it so far.
    Status sync() const;

    // Locks the folder without waiting. Fails with EWOULDBLOCK when another holds the lock, and with ENOENT
    // when the folder has been deleted or moved since it was opened. A file system without locks for folders
    // keeps nobody out.
    Result<FileLock> lock() const;

private:
    struct Open {
        FileDescriptor descriptor;
        std::string realPath;
    };

    OpenFolder(FileDescriptor descriptor, std::string realPath);
    bool isStillThere() const;

    std::shared_ptr<const Open> open_;
};

// Where an item is or could be: the folder that holds it, held open, and its name there. Whatever is decided
// about a place stays true of what is done with it, because the links in the parents were followed once, when
// the folder was opened. A value. Any thread.
class Place {
public:
    using Missing = OpenFolder::Missing;

    // Fails when the parent folder cannot be opened, when its real path cannot be found, or when the path
    // names no entry of a folder ("/", ".", ".."). The item itself need not exist. The path may be longer
    // than the system takes in one call.
    static Result<Place> open(const std::string& path);

    // The place of the path or, where its folders do not exist yet, that of the uppermost one that is
    // missing: where the path would be made. Absent when it cannot be found.
    static std::optional<Place> nearest(std::string path);

    // The parent's real path, without links, and the name. This is what must be judged before acting.
    const std::string& realPath() const { return realPath_; }
    const std::string& name() const { return name_; }

    // The folder that holds the item, and its descriptor as a base for relative calls.
    const OpenFolder& parent() const { return parent_; }
    int folder() const { return parent_.descriptor(); }

    // The item itself, a link not followed; the errno value on failure.
    std::expected<FileStatus, int> status() const;

    // As for the folders that hold the two.
    bool isOnAnotherVolume(const Place& other) const { return parent_.isOnAnotherVolume(other.parent_); }
    bool isReadOnly() const { return parent_.isReadOnly(); }

    // Whether a volume, or a folder from elsewhere, is mounted on the item itself.
    bool isMountPoint() const;

    // Another name in the same folder. `name` must be a single component.
    Place beside(const std::string& name) const { return parent_.entry(name); }

    // The item, opened as a folder. Fails when it is none or a link to one.
    Result<OpenFolder> asFolder(Missing missing = Missing::fail) const {
        return parent_.subfolder(name_, missing);
    }

    // Puts the entries of the folder that holds the item on the disk.
    Status sync() const { return parent_.sync(); }

private:
    friend class OpenFolder;
    Place(OpenFolder parent, std::string name);

    OpenFolder parent_;
    std::string name_;
    std::string realPath_;
};

// Whether a name can be one entry of a folder: not empty, "." or "..", without "/" and NUL.
bool isEntryName(const std::string& name);

} // namespace loftmere
