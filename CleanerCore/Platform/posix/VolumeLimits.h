#pragma once

#include "CleanerCore/Support/Result.h"

#include <string>
#include <string_view>

namespace loftmere {

// "Could not {action} {path}: another volume is mounted there".
Failure mountedThere(std::string_view action, const std::string& path);

} // namespace loftmere
