#include "CleanerCore/Support/ByteFormat.h"
#include "CleanerCore/Support/ByteSum.h"
#include "CleanerCore/Support/RecordCodec.h"
#include "CleanerCore/Support/Text.h"
#include "terminal/CleanReportText.h"
#include "terminal/Rows.h"
#include "terminal/SessionLookup.h"
#include "terminal/StatusLine.h"
#include "terminal/Verbs.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace loftmere {

namespace {

struct UndoOptions {
    std::string session;
    std::vector<std::string> entries;
};

// A name with signs that a terminal cannot show may be given as the list of sessions shows it.
bool isNamed(const QuarantineEntry& entry, const std::string& name) {
    return entry.storedName == name || printable(entry.storedName) == name;
}

// What is to be brought back: no entries mean all of the session. Fails with the names that it does not hold.
std::expected<std::optional<std::set<std::string>>, std::string>
wantedEntries(const UndoOptions& options, const QuarantineSession& session) {
    if (options.entries.empty()) return std::nullopt;
    std::set<std::string> wanted;
    std::vector<std::string> unknown;
    for (const std::string& name : options.entries) {
        const auto isIt = [&](const QuarantineEntry& entry) { return isNamed(entry, name); };
        const auto entry = std::ranges::find_if(session.entries, isIt);
        if (entry != session.entries.end())
            wanted.insert(entry->storedName);
        else
            unknown.push_back(name);
    }
    if (!unknown.empty()) return std::unexpected(joined(unknown, ", "));
    return wanted;
}

// How many of the entries that were asked for are still held, and their bytes.
std::pair<size_t, int64_t> heldOf(const QuarantineSession& session,
                                  const std::optional<std::set<std::string>>& wanted) {
    std::pair<size_t, int64_t> held;
    for (const QuarantineEntry& entry : session.entries) {
        if (entry.restored || (wanted && !wanted->contains(entry.storedName))) continue;
        ++held.first;
        addBytes(held.second, entry.size);
    }
    return held;
}

void tell(Session& session, const QuarantineSession& restored, const std::vector<CleanFailure>& failures,
          std::pair<size_t, int64_t> asked) {
    if (session.json()) {
        return session.print(
            {{"session", restored.id}, {"failures", JsonCodec<std::vector<CleanFailure>>::encode(failures)}});
    }
    printFailures(session, "Not restored", failures);
    const size_t back = asked.first - std::min(asked.first, failures.size());
    session.console().printLine(fmt::format("Restored {} of session {}{}", counted(back, "item"),
                                            printable(restored.id),
                                            failures.empty() ? ", " + ByteFormat::string(asked.second) : ""));
}

ExitStatus undo(Session& session, const UndoOptions& options) {
    const auto found = options.session.empty() ? newestHeld(session) : sessionNamed(session, options.session);
    if (!found) {
        session.console().say(found.error().message);
        sayUnreadable(session);
        return ExitStatus::failed;
    }
    const auto wanted = wantedEntries(options, *found);
    if (!wanted) {
        session.console().say(
            fmt::format("session {} holds no {}", printable(found->id), printable(wanted.error())));
        return ExitStatus::failed;
    }
    const auto asked = heldOf(*found, *wanted);
    StatusLine working(session.console());
    working.draw("Bringing back " + counted(asked.first, "item"));
    const auto failures = session.model().restore(*found, *wanted);
    working.erase();
    if (!failures) {
        session.console().say(printable(failures.error().message));
        return ExitStatus::failed;
    }
    tell(session, *found, *failures, asked);
    return failures->empty() ? ExitStatus::done : ExitStatus::failed;
}

} // namespace

void declareUndo(CLI::App& program, Request& request) {
    const auto options = std::make_shared<UndoOptions>();
    CLI::App& verb = addVerb(program, request, "undo", "Bring back what a clean has put into quarantine");
    verb.add_option("SESSION", options->session,
                    "The session to undo; none means the newest that holds something");
    verb.add_option("--entry", options->entries,
                    "Bring back only the item with this stored name; may be repeated")
        ->type_name("STOREDNAME")
        ->allow_extra_args(false);
    verb.callback([&request, options] {
        request.run = [options](Session& session) { return undo(session, *options); };
    });
}

} // namespace loftmere
