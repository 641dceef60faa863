#pragma once

#include "CleanerCore/Platform/Place.h"
#include "CleanerCore/Support/Result.h"

#include <string>
#include <vector>

// The few operations that take away files of the user. They act relative to open folders, never follow a link
// and never leave the tree they were given. They may take long: never on the main thread.
namespace loftmere {

// Deletes the item: a folder with everything in it, a link as a link. Folders of ours that we may not write
// to, such as a read-only module cache, are made writable first. A volume mounted inside is left alone and
// counts as a failure. On failure everything that could be deleted is gone, the rest remains, and the first
// failure is reported; an item whose own folder may not be changed stays complete. A helper joins in for a
// large tree. Memory and descriptors stay bounded however wide or deep the tree is.
Status removeItem(const Place& place);

// Moves the item in one step; both places must be on one volume (EXDEV). Fails with EEXIST when something is
// at `to`: nothing is overwritten. After a loss of power the item is at one place or the other; Place::sync
// of either makes the move permanent. Where the file system has no exclusive rename, something that appears
// at `to` between the look and the move is replaced.
Status moveItem(const Place& from, const Place& to);

// Moves the item to the Trash of the home folder, under a name that is free there: its ".Trash" folder if
// there is one, else the Trash of the desktop, which remembers where the item was. Fails with EXDEV when the
// item is on another volume.
Status trashItem(const Place& place, const std::string& home);

// What the volumes forbid, found out without touching anything: the failure that the operation would end
// with, in its words. Success only means that no such obstacle is known. `mountPoints` are those of the
// system; a volume that is mounted below the item is found among them.
Status mayRemoveItem(const Place& place, const std::vector<std::string>& mountPoints);
Status mayMoveItem(const Place& from, const Place& to);
Status mayTrashItem(const Place& place, const std::string& home);

} // namespace loftmere
