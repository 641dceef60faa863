#include "CleanerCore/Platform/posix/DoomedFolder.h"

#include "CleanerCore/Platform/posix/Calls.h"
#include "CleanerCore/Platform/posix/FolderAccess.h"

namespace loftmere {

namespace {

constexpr mode_t ownerRights = 0700;

bool isOursWithoutRights(const struct stat& status) {
    return S_ISDIR(status.st_mode) && status.st_uid == ::geteuid() &&
           (status.st_mode & ownerRights) != ownerRights;
}

mode_t withRights(const struct stat& status) {
    return (status.st_mode & 07777) | ownerRights;
}

} // namespace

DoomedFolder::DoomedFolder(std::shared_ptr<DoomedFolder> above, std::string itsName)
    : parent(std::move(above)), name(std::move(itsName)), depth(parent ? parent->depth + 1 : 0) {}

int DoomedFolder::descriptor() const {
    return stream ? ::dirfd(stream.get()) : -1;
}

bool DoomedFolder::attach(FileDescriptor folder) {
    if (!folder) return false;
    stream.reset(::fdopendir(folder.get()));
    if (!stream) return false;
    (void)folder.release(); // the stream closes it
    return true;
}

void DoomedFolder::close() {
    if (stream && ::fstat(descriptor(), &identity) == 0) stream.reset();
}

bool DoomedFolder::reopenFrom(const DoomedFolder& inner) {
    if (stream) return true;
    if (inner.descriptor() < 0) return false;
    FileDescriptor folder = openForRemoval(inner.descriptor(), "..");
    struct stat found{};
    if (!folder || ::fstat(folder.get(), &found) != 0) return false;
    if (found.st_dev != identity.st_dev || found.st_ino != identity.st_ino) return false;
    return attach(std::move(folder));
}

bool DoomedFolder::makeWritable() {
    if (formerMode) return true;
    struct stat status{};
    if (::fstat(descriptor(), &status) != 0 || !isOursWithoutRights(status)) return false;
    if (calls::changeMode(descriptor(), withRights(status)) != 0) return false;
    formerMode = status.st_mode & 07777;
    return true;
}

void DoomedFolder::restoreMode() const {
    if (formerMode && stream) calls::changeMode(descriptor(), *formerMode);
}

FileDescriptor openDoomed(int parent, const char* name, std::optional<mode_t>& formerMode) {
    FileDescriptor folder = openForRemoval(parent, name);
    struct stat status{};
    if (folder || errno != EACCES) return folder;
    const bool ours =
        ::fstatat(parent, name, &status, AT_SYMLINK_NOFOLLOW) == 0 && isOursWithoutRights(status);
    if (ours && calls::changeModeAt(parent, name, withRights(status)) == 0) {
        formerMode = status.st_mode & 07777;
        return openForRemoval(parent, name);
    }
    errno = EACCES;
    return folder;
}

} // namespace loftmere
