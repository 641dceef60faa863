#pragma once

#include "CleanerCore/Files/Paths.h"
#include "CleanerCore/Removal/Quarantine/QuarantineFolder.h"
#include "CleanerCore/Support/Result.h"

#include <optional>
#include <set>
#include <string>

namespace loftmere {

// Moves the entries of a session back to where they were, all or those whose stored names are given, and
// saves the manifest. `session` is what `folder` has read; the caller holds the folder's lock. Nothing is
// brought back to a place where no item can have been before it was quarantined: a path that is not absolute
// and plain, one inside the program's own folder, one that is reached through a link that leads out of the
// home folder, and one from which the policy lets nothing be taken. The user's own rules do not count: they
// may be younger than the session. Fails when the manifest cannot be saved.
Result<Restored> restoreEntries(const Paths& paths, QuarantineFolder& folder, QuarantineSession session,
                                const std::optional<std::set<std::string>>& entryIDs);

// The real path of a folder that exists; the path itself when there is no telling.
std::string realFolderPath(const std::string& path);

} // namespace loftmere
