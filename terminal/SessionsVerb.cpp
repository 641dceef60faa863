#include "CleanerCore/Support/ByteFormat.h"
#include "CleanerCore/Support/RecordCodec.h"
#include "CleanerCore/Support/Text.h"
#include "terminal/Rows.h"
#include "terminal/SessionLookup.h"
#include "terminal/Verbs.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace loftmere {

namespace {

void printSession(Session& session, const QuarantineSession& one, bool full) {
    Console& console = session.console();
    printHeading(console, fmt::format("{}  {}", printable(one.id), printable(label(one.trigger))),
                 fmt::format("{}  {:>9}", counted(static_cast<size_t>(one.activeCount()), "item"),
                             ByteFormat::string(one.totalSize())));
    printParagraph(console, Ink::dim,
                   fmt::format("From {}, kept until {}", shownDate(one.createdAt), shownDate(one.expiresAt)),
                   3);
    std::vector<Row> rows;
    for (const QuarantineEntry& entry : one.entries) {
        rows.push_back({.size = entry.size,
                        .tag = entry.restored ? "restored" : "",
                        .title = printable(entry.storedName),
                        .note = session.shown(entry.originalPath)});
    }
    printRows(console, rows, full);
    console.printLine();
}

ExitStatus sessions(Session& session, bool full) {
    const auto& all = *session.model().sessions;
    sayUnreadable(session);
    if (session.json()) {
        session.print(JsonCodec<std::vector<QuarantineSession>>::encode(all));
        return ExitStatus::done;
    }
    for (const QuarantineSession& one : all) printSession(session, one, full);
    if (all.empty()) session.console().printLine("The quarantine is empty.");
    return ExitStatus::done;
}

} // namespace

void declareSessions(CLI::App& program, Request& request) {
    CLI::App& verb =
        addVerb(program, request, "sessions", "List what is in quarantine and can be brought back");
    const auto full = std::make_shared<bool>(false);
    verb.add_flag("--full", *full, "Show every item, not only the first of each session");
    verb.callback(
        [&request, full] { request.run = [full](Session& session) { return sessions(session, *full); }; });
}

} // namespace loftmere
