#include "CleanerCore/Support/ByteFormat.h"
#include "CleanerCore/Support/Text.h"
#include "terminal/SessionLookup.h"
#include "terminal/Verbs.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace loftmere {

namespace {

ExitStatus purge(Session& session, const std::string& id) {
    const auto found = sessionNamed(session, id);
    const Status purged = found ? session.model().purge(*found) : Status(failed(found.error()));
    if (!purged) {
        session.console().say(printable(purged.error().message));
        return ExitStatus::failed;
    }
    if (session.json()) {
        session.print({{"session", found->id}, {"freedBytes", found->totalSize()}});
    } else {
        session.console().printLine(fmt::format("Purged session {}, {}", printable(found->id),
                                                ByteFormat::string(found->totalSize())));
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
