#include "CleanerCore/Platform/posix/FolderAccess.h"

#include "CleanerCore/Platform/posix/Calls.h"

namespace loftmere {

int renameExclusivelyAt(int fromAt, const char* from, int toAt, const char* to) {
    const int answer = systemRenameExclusivelyAt(fromAt, from, toAt, to);
    if (answer == 0 || errno != ENOTSUP) return answer;
    struct stat standing{};
    if (::fstatat(toAt, to, &standing, AT_SYMLINK_NOFOLLOW) == 0) errno = EEXIST;
    return errno == ENOENT ? calls::rename(fromAt, from, toAt, to) : -1;
}

} // namespace loftmere
