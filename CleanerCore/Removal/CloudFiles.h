#pragma once

#include "CleanerCore/Platform/Place.h"
#include "CleanerCore/Support/Result.h"

// What is different about files that a cloud provider keeps in sync: a removal here is one on all the user's
// machines, and the provider may bring back what was just removed.
namespace loftmere::CloudFiles {

// Whether the file's content is held in the cloud only. Where the system does not know, a file that is not
// there counts as such.
bool isDataless(const Place& place);

// The file that iCloud leaves in place of one whose content it has taken away: ".{name}.icloud" beside it.
Place placeholder(const Place& place);

// Removes a synced item in step with its provider, and with it the placeholder. Tries up to `attempts` times,
// at least once, with pauses of 0.25 seconds, doubled each time. Fails with the last error, also when the
// item keeps coming back. Sleeps on the calling thread.
Status remove(const Place& place, int attempts);

} // namespace loftmere::CloudFiles
