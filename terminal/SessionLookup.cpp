#include "terminal/SessionLookup.h"

#include "CleanerCore/Support/Text.h"

#include <fmt/format.h>

namespace loftmere {

Result<QuarantineSession> sessionNamed(Session& session, const std::string& id) {
    for (const QuarantineSession& candidate : *session.model().sessions) {
        if (candidate.id == id) return candidate;
    }
    return failed(Failure::saying(
        fmt::format("there is no session {}; \"loftmere sessions\" lists those there are", printable(id))));
}

Result<QuarantineSession> newestHeld(Session& session) {
    for (const QuarantineSession& candidate : *session.model().sessions) {
        if (candidate.activeCount() > 0) return candidate;
    }
    return failed(Failure::saying("there is nothing to undo"));
}

} // namespace loftmere
