#pragma once

#include "CleanerCore/Platform/FileStatus.h"

#include <cstdint>
#include <string>

namespace loftmere {

// A file as a walk found it. `status` tells later whether it is still the same.
struct ListedFile {
    std::string path;
    FileStatus status;

    int64_t size() const { return status.size; } // logical bytes
};

} // namespace loftmere
