#pragma once

#include "CleanerCore/Removal/QuarantineSession.h"
#include "CleanerCore/Support/Result.h"
#include "terminal/Session.h"

#include <string>

namespace loftmere {

// A copy of the quarantine session with this id; a failure that can be shown when there is none.
Result<QuarantineSession> sessionNamed(Session& session, const std::string& id);

// The newest one that still holds something.
Result<QuarantineSession> newestHeld(Session& session);

} // namespace loftmere
