#include "CleanerCore/Platform/FileContent.h"

#include <fcntl.h>

#include <cerrno>
#include <cstdio>

namespace loftmere {

Status renameExclusively(const std::string& from, const std::string& to) {
    if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return {};
    return failed(Failure::posix(errno, "move", from));
}

} // namespace loftmere
