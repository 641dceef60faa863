#pragma once

#include "CleanerCore/Platform/Place.h"
#include "CleanerCore/Support/Result.h"

#include <string>
#include <vector>

// The few operations that take files of the user's away. They act relative to open folders, never follow a
// link and never leave the tree they were given. May block for long: never on the main thread.
namespace loftmere {

// Deletes the item, a folder with all it holds, links as links. Folders of ours without the right to write,
// such as a read-only module cache, are made writable first. A volume mounted inside is left alone and told
// as a failure. On failure all that could be deleted is gone, the rest stands, and the first failure is told;
// an item whose own folder may not be changed is left whole. A helper joins in for a large tree. Memory and
// descriptors stay bounded however wide or deep the tree is.
Status removeItem(const Place& place);

// Moves the item in one step; both places must be on one volume (EXDEV). Fails with EEXIST when something
// stands at `to`: nothing is overwritten. After a loss of power the item stands at the one place or the
// other; Place::sync of either folder makes the move last. Where the file system has no exclusive rename,
// something that appears at `to` between the look and the move is replaced.
Status moveItem(const Place& from, const Place& to);

// Moves the item to the Trash of the home folder, under a name that is free there: its ".Trash" folder if
// there is one, else the Trash of the desktop, which remembers where the item was. Fails with EXDEV when the
// item is on another volume.
Status trashItem(const Place& place, const std::string& home);

// What the volumes forbid, told without touching anything: the failure with which the operation would end, in
// its words. Success says only that nothing of the kind is known. `mountPoints` are those of the system; a
// volume that is mounted below the item is found among them.
Status mayRemoveItem(const Place& place, const std::vector<std::string>& mountPoints);
Status mayMoveItem(const Place& from, const Place& to);
Status mayTrashItem(const Place& place, const std::string& home);

} // namespace loftmere
