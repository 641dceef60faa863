#include "terminal/SessionLookup.h"

#include "CleanerCore/Removal/Quarantine/Quarantine.h"
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

std::vector<std::string> unreadableSessions(Session& session) {
    const AppModel& model = session.model();
    return Quarantine(model.paths).unreadable(*model.sessions);
}

void sayUnreadable(Session& session) {
    const std::vector<std::string> names = unreadableSessions(session);
    if (names.empty()) return;
    session.console().say(fmt::format(
        "cannot be read: {} in {}; \"loftmere purge\" gives up what {}", printable(joined(names, ", ")),
        session.shown(session.model().paths.quarantineDir()), names.size() == 1 ? "it holds" : "they hold"));
}

Result<QuarantineSession> newestHeld(Session& session) {
    for (const QuarantineSession& candidate : *session.model().sessions) {
        if (candidate.activeCount() > 0) return candidate;
    }
    return failed(Failure::saying("there is nothing to undo"));
}

} // namespace loftmere
