#pragma once

#include "CleanerCore/Platform/Place.h"
#include "CleanerCore/Support/Result.h"

#include <cstddef>
#include <functional>
#include <string>

namespace loftmere {

// Calls `attempt` with "a.txt", "a 2.txt", "a 3.txt", ... until it answers anything but EEXIST. The names
// leave `spare` bytes of what a name may have.
Status underFreeName(const std::string& name, size_t spare,
                     const std::function<Status(const std::string&)>& attempt);

// Moves the item into the folder of `inTrash`, under a name that is free there.
Status moveUnderFreeName(const Place& place, const Place& inTrash);

} // namespace loftmere
