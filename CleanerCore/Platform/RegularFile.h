#pragma once

#include "CleanerCore/Platform/posix/FileDescriptor.h"
#include "CleanerCore/Support/Result.h"

#include <string>

namespace loftmere {

// Opens a file for looking at its content, links followed, without refreshing its access date where the
// system allows it. Refuses, without waiting, whatever is no regular file (a folder, a FIFO, a device) and a
// file whose content only the cloud holds, since reading it would fetch it. Any thread.
Result<FileDescriptor> openRegularFile(const std::string& path);

} // namespace loftmere
