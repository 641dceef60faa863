#pragma once

#include "CleanerCore/Removal/Quarantine/QuarantineSession.h"
#include "CleanerCore/Support/Result.h"
#include "terminal/Session.h"

#include <string>
#include <vector>

namespace loftmere {

// A copy of the quarantine session with this id; a failure that can be shown when there is none.
Result<QuarantineSession> sessionNamed(Session& session, const std::string& id);

// The names of the quarantine's folders that hold no readable session: nothing can be brought back from them
// by name, but they can be purged.
std::vector<std::string> unreadableSessions(Session& session);

// Says on standard error which there are; nothing when there are none.
void sayUnreadable(Session& session);

// The newest one that still holds something.
Result<QuarantineSession> newestHeld(Session& session);

} // namespace loftmere
