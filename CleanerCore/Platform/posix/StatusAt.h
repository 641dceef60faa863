#pragma once

#include "CleanerCore/Platform/FileStatus.h"

#include <expected>

namespace loftmere {

enum class FinalLink { keep, follow };

// The item `name` of the open folder, or of the working folder for AT_FDCWD; the errno value on failure.
std::expected<FileStatus, int> statusAt(int folder, const char* name, FinalLink link = FinalLink::keep);

} // namespace loftmere
