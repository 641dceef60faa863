#pragma once

#include "CleanerCore/Process/Shell.h"

#include <string>

namespace loftmere {

class UninstallService {
public:
    // One sentence for the user on why `path` still stands after it was to be removed as root.
    static std::string explain(const Shell::Result& result, const std::string& path);
};

} // namespace loftmere
