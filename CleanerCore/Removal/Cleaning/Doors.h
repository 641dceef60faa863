#pragma once

#include "CleanerCore/Files/Paths.h"
#include "CleanerCore/Platform/Place.h"
#include "CleanerCore/Safety/RemovalPermit.h"
#include "CleanerCore/Support/Result.h"

#include <string>

// The doors through which a single item leaves, apart from quarantine and root's share. None opens without a
// permit. All may block: never on the main thread.
namespace loftmere {

// Deletes the item, in step with its cloud provider if it has one. Fails also when the item is still on disk
// after a removal that reported success.
Status removeForGood(const ClearedItem& item);

// Moves the item to the Trash of the home folder. A synced item does not go through the local Trash: it is
// removed in step with its provider.
Status moveToTrash(const ClearedItem& item, const std::string& home);

// What is different about files that a cloud provider keeps in sync: a removal here is a removal on all the
// user's machines, and the provider may bring back what was just removed.
namespace CloudFiles {

// Whether the file's content is held in the cloud only. Where the system does not know, a missing file counts
// as such.
bool isDataless(const Place& place);

// The file that iCloud leaves in place of one whose content it has taken away: ".{name}.icloud" beside it.
Place placeholder(const Place& place);

// Removes a synced item in step with its provider, along with its placeholder. Tries up to `attempts` times,
// at least once, with a pause of 0.25 seconds that doubles each time. Fails with the last error, also when
// the item keeps coming back. Sleeps on the calling thread.
Status remove(const ClearedItem& item, int attempts);

} // namespace CloudFiles

// Releases the local copies of synced files. The cloud keeps the files.
namespace CloudEvictor {

// Releases the local copy of a file. Fails with a sentence for the user. Runs tools.
Status evict(const RemovalPermit& permit, const std::string& path, const Paths& paths);

// Reports what is certain to keep the file from being released, in the words of `evict`: it is in no cloud
// folder, or there is no tool for it. Touches nothing. Any thread.
Status mayEvict(const std::string& path, const Paths& paths);

} // namespace CloudEvictor

} // namespace loftmere
