#include "CleanerCore/Platform/Removal.h"

#include "CleanerCore/Platform/posix/Calls.h"
#include "CleanerCore/Platform/posix/FolderAccess.h"
#include "CleanerCore/Platform/posix/TreeRemoval.h"

namespace loftmere {

Status removeItem(const Place& place) {
    // The quick way for everything that is no folder; systems answer one or the other for those.
    if (calls::unlink(place.folder(), place.name().c_str(), 0) == 0) return {};
    const int error = errno;
    if (error == EISDIR || error == EPERM) {
        const auto status = place.status();
        if (status && status->type == FileType::directory) return TreeRemoval(place).run();
    }
    return failed(Failure::posix(error, "delete", place.realPath()));
}

Status moveItem(const Place& from, const Place& to) {
    const int answer =
        renameExclusivelyAt(from.folder(), from.name().c_str(), to.folder(), to.name().c_str());
    if (answer == 0) return {};
    return failed(Failure::posix(errno, "move", from.realPath()));
}

} // namespace loftmere
