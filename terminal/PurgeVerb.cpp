#include "CleanerCore/Support/ByteFormat.h"
#include "CleanerCore/Support/Text.h"
#include "terminal/SessionLookup.h"
#include "terminal/StatusLine.h"
#include "terminal/Verbs.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace loftmere {

namespace {

// What stands for a session that cannot be read.
std::optional<QuarantineSession> unreadableNamed(Session& session, const std::string& id) {
    for (const std::string& name : unreadableSessions(session)) {
        if (name != id && printable(name) != id) continue;
        QuarantineSession unreadable;
        unreadable.id = name;
        return unreadable;
    }
    return std::nullopt;
}

ExitStatus purge(Session& session, const std::string& id) {
    const auto known = sessionNamed(session, id);
    const auto unreadable = known ? std::nullopt : unreadableNamed(session, id);
    const Result<QuarantineSession> found = unreadable ? *unreadable : known;
    StatusLine working(session.console());
    working.draw("Deleting what the session holds");
    const Status purged = found ? session.model().purge(*found) : Status(failed(found.error()));
    working.erase();
    if (!purged) {
        session.console().say(printable(purged.error().message));
        return ExitStatus::failed;
    }
    if (session.json()) {
        session.print({{"session", found->id}, {"freedBytes", known ? Json(found->totalSize()) : Json()}});
    } else {
        session.console().printLine(
            fmt::format("Purged session {}, {}", printable(found->id),
                        known ? ByteFormat::string(found->totalSize()) : "which could not be read"));
    }
    return ExitStatus::done;
}

} // namespace

void declarePurge(CLI::App& program, Request& request) {
    const auto id = std::make_shared<std::string>();
    CLI::App& verb =
        addVerb(program, request, "purge", "Give up a quarantine session for good and free its space");
    verb.add_option("SESSION", *id, "The session's id, as \"loftmere sessions\" lists it")->required();
    verb.callback([&request, id] { request.run = [id](Session& session) { return purge(session, *id); }; });
}

} // namespace loftmere
