#pragma once

#include "CleanerCore/Platform/Place.h"
#include "CleanerCore/Support/Result.h"

#include <string>

// The few operations that take files of the user's away. They act relative to open folders, never follow a link and
// never leave the tree they were given. May block for long: never on the main thread.
namespace loftmere {

// Deletes the item, a folder with all it holds, links as links. On failure all that could be deleted is gone, the
// rest stands, and the first failure is told.
Status removeItem(const Place& place);

// Moves the item in one step; both places must be on one volume. Fails with EEXIST when something stands at `to`.
Status moveItem(const Place& from, const Place& to);

// Moves the item to the Trash of the home folder, under a name that is free there.
Status trashItem(const Place& place, const std::string& home);

} // namespace loftmere
