#pragma once

#include "CleanerCore/Platform/Place.h"
#include "CleanerCore/Support/Result.h"

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

// What the operations of Removal.h are made of.
namespace loftmere {

// Deletes the folder at the place, as `removeItem`.
Status removeTree(const Place& place);

// "Could not {action} {path}: another volume is mounted there".
Failure mountedThere(std::string_view action, const std::string& path);

// Calls `attempt` with "a.txt", "a 2.txt", "a 3.txt", ... until it answers anything but EEXIST. The names
// leave `spare` bytes of the length that a name may have.
Status underFreeName(const std::string& name, size_t spare,
                     const std::function<Status(const std::string&)>& attempt);

// `trashItem` and `mayTrashItem` for a home without a ".Trash" folder: the system's other trash, or where it
// has none the failure with which that folder could not be opened.
Status moveToOtherTrash(const Place& place, const std::string& home, Failure noTrashFolder);
Status mayMoveToOtherTrash(const Place& place, const std::string& home);

} // namespace loftmere
