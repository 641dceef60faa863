#include "CleanerCore/Platform/FileContent.h"

#include <cerrno>
#include <cstdio>

namespace loftmere {

Status renameExclusively(const std::string& from, const std::string& to) {
    if (::renamex_np(from.c_str(), to.c_str(), RENAME_EXCL) == 0) return {};
    return failed(Failure::posix(errno, "move", from));
}

} // namespace loftmere
