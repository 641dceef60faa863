#include "CleanerCore/Platform/Terminal.h"
#include "CleanerCore/Support/ByteCount.h"
#include "CleanerCore/Support/RecordCodec.h"
#include "terminal/CleanText.h"
#include "terminal/Verbs.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>

// The verbs for what is in quarantine: sessions, undo and purge.
namespace loftmere {

namespace {

constexpr int noteIndent = 3;
constexpr const char* purging = "Deleting what the quarantine held";
constexpr const char* stoppingUndo = "loftmere: stopping as soon as the items are back\n";
constexpr const char* stoppingPurge = "loftmere: stopping as soon as the log says what was deleted\n";

Result<QuarantineSession> sessionNamed(Program& program, const std::string& id) {
    const auto& sessions = *program.model().sessions;
    const auto found = std::ranges::find(sessions, id, &QuarantineSession::id);
    if (found != sessions.end()) return *found;
    return failed(Failure::saying(fmt::format(
        "there is no session \"{}\"; \"loftmere sessions\" lists those there are", printable(id))));
}

// The newest one that still holds something.
Result<QuarantineSession> newestHeld(Program& program) {
    for (const QuarantineSession& session : *program.model().sessions) {
        if (session.activeCount() > 0) return session;
    }
    return failed(Failure::saying("there is nothing to undo"));
}

// Says what of the quarantine cannot be read. `failed` if there is anything.
ExitStatus sayUnreadable(Program& program) {
    const auto& failure = *program.model().quarantineFailure;
    if (failure) program.console().say(printable(*failure));
    const std::vector<std::string> names = program.model().unreadableSessions;
    if (names.empty()) return failure ? ExitStatus::failed : ExitStatus::done;
    program.console().say(fmt::format(
        "cannot be read: {} in {}; \"loftmere purge\" gives up what {}", printable(joined(names, ", ")),
        program.shown(program.model().paths.quarantineDir()), names.size() == 1 ? "it holds" : "they hold"));
    return ExitStatus::failed;
}

// A name with signs that a terminal cannot show may be given as it is shown.
bool isNamed(const std::string& actual, const std::string& given) {
    return actual == given || printable(actual) == given;
}

// How many of the wanted entries are still held, and their bytes.
Extent heldOf(const QuarantineSession& session, const std::optional<std::set<std::string>>& wanted) {
    Extent held;
    for (const QuarantineEntry& entry : session.entries) {
        if (!entry.restored && (!wanted || wanted->contains(entry.storedName))) held.add(entry.size);
    }
    return held;
}

void printSession(Program& program, const QuarantineSession& session, bool verbose) {
    Console& console = program.console();
    printHeading(console, fmt::format("{}  {}", printable(session.id), printable(label(session.trigger))),
                 heldOf(session, std::nullopt));
    const std::string until = session.expiresAt > currentDate()
                                  ? fmt::format("kept until {}", shownDate(session.expiresAt))
                                  : fmt::format("expired {}; the next clean deletes it, or \"loftmere purge "
                                                "--expired\" at once",
                                                shownDate(session.expiresAt));
    printParagraph(console, Ink::dim, fmt::format("From {}, {}", shownDate(session.createdAt), until),
                   noteIndent);
    std::vector<Row> rows;
    for (const QuarantineEntry& entry : session.entries) {
        rows.push_back({.size = entry.size,
                        .tag = entry.restored ? "restored" : "",
                        .title = printable(entry.storedName),
                        .path = program.shown(entry.originalPath)});
    }
    printRows(console, rows, verbose);
    console.printLine();
}

ExitStatus sessions(Program& program, bool verbose) {
    const std::vector<QuarantineSession>& all = program.model().sessions;
    const ExitStatus status = sayUnreadable(program);
    if (program.json()) {
        program.print(JsonCodec<std::vector<QuarantineSession>>::encode(all));
        return status;
    }
    for (const QuarantineSession& session : all) printSession(program, session, verbose);
    if (all.empty() && status == ExitStatus::done) program.console().printLine("The quarantine is empty.");
    return status;
}

struct UndoOptions {
    std::vector<std::string> sessions; // one at most
    std::vector<std::string> entries;
};

// The stored names of what is to be brought back; absent for all of the session. Fails with the names that
// the session does not hold.
std::expected<std::optional<std::set<std::string>>, std::string>
wantedEntries(const UndoOptions& options, const QuarantineSession& session) {
    if (options.entries.empty()) return std::nullopt;
    std::set<std::string> wanted;
    std::vector<std::string> unknown;
    for (const std::string& name : options.entries) {
        const auto isIt = [&](const QuarantineEntry& entry) { return isNamed(entry.storedName, name); };
        const auto entry = std::ranges::find_if(session.entries, isIt);
        if (entry != session.entries.end())
            wanted.insert(entry->storedName);
        else
            unknown.push_back(name);
    }
    if (!unknown.empty()) return std::unexpected(joined(unknown, ", "));
    return wanted;
}

void printUndone(Program& program, const QuarantineSession& session, const Restored& restored) {
    const auto& failures = restored.failures;
    if (program.json()) {
        return program.print(
            {{"session", session.id}, {"failures", JsonCodec<std::vector<CleanFailure>>::encode(failures)}});
    }
    printFailures(program, "Not restored", failures);
    const Extent back{.count = restored.count, .bytes = restored.bytes};
    program.console().printLine(fmt::format("Restored {} of session {}, {}", counted(back.count, "item"),
                                            printable(session.id), ByteFormat::string(back.bytes)));
}

ExitStatus undo(Program& program, const UndoOptions& options) {
    Console& console = program.console();
    const auto found =
        options.sessions.empty() ? newestHeld(program) : sessionNamed(program, options.sessions.front());
    if (!found) {
        console.say(found.error().message);
        sayUnreadable(program);
        return ExitStatus::failed;
    }
    const auto wanted = wantedEntries(options, *found);
    if (!wanted) {
        console.say(fmt::format("session {} holds no {}", printable(found->id), printable(wanted.error())));
        return ExitStatus::failed;
    }
    noteStopSignals(stoppingUndo, stoppingUndo);
    const Extent asked = heldOf(*found, *wanted);
    const auto restored = console.working("Bringing back " + counted(asked.count, "item"),
                                          [&] { return program.model().restore(*found, *wanted); });
    if (!restored) {
        console.say(printable(restored.error().message));
        return ExitStatus::failed;
    }
    printUndone(program, *found, *restored);
    const bool isComplete = restored->failures.empty() && restored->count == asked.count;
    return Program::stoppedOr(isComplete ? ExitStatus::done : ExitStatus::failed);
}

struct PurgeOptions {
    std::vector<std::string> sessions; // one at most
    bool expired = false;
};

// A session that cannot be read, as `AppModel::purge` takes it.
std::optional<QuarantineSession> unreadableNamed(Program& program, const std::string& id) {
    for (const std::string& name : *program.model().unreadableSessions) {
        if (!isNamed(name, id)) continue;
        QuarantineSession unreadable;
        unreadable.id = name;
        return unreadable;
    }
    return std::nullopt;
}

ExitStatus purgeOne(Program& program, const std::string& id) {
    Console& console = program.console();
    const auto unreadable = unreadableNamed(program, id);
    const auto found = unreadable ? Result<QuarantineSession>(*unreadable) : sessionNamed(program, id);
    const Status purged = found ? console.working(purging, [&] { return program.model().purge(*found); })
                                : Status(failed(found.error()));
    if (!purged) {
        console.say(shownMessage(purged.error().message));
        return ExitStatus::failed;
    }
    if (program.json()) {
        program.print(
            {{"session", found->id}, {"freedBytes", unreadable ? Json() : Json(found->totalSize())}});
    } else {
        console.printLine(
            fmt::format("Purged session {}, {}", printable(found->id),
                        unreadable ? "which could not be read" : ByteFormat::string(found->totalSize())));
    }
    return ExitStatus::done;
}

ExitStatus purgeExpired(Program& program) {
    const auto purge = program.finish(program.model().purgeExpired(), [] { return purging; });
    if (program.json()) {
        program.print({{"sessions", purge.purged}, {"freedBytes", purge.bytes}});
    } else {
        program.console().printLine(purge.purged.empty() ? "No session was purged."
                                                         : "Purged " + shownPurge(purge));
    }
    if (purge.left.empty()) return ExitStatus::done;
    program.console().say("expired, but could not be deleted: " + printable(joined(purge.left, ", ")));
    return ExitStatus::failed;
}

ExitStatus purge(Program& program, const PurgeOptions& options) {
    if (options.expired != options.sessions.empty()) {
        program.console().say("name one session, or give --expired for all that have expired");
        return ExitStatus::usage;
    }
    noteStopSignals(stoppingPurge, stoppingPurge);
    return Program::stoppedOr(options.expired ? purgeExpired(program)
                                              : purgeOne(program, options.sessions.front()));
}

} // namespace

void declareSessions(CLI::App& parser, Request& request) {
    CLI::App& verb =
        addVerb(parser, request, "sessions", "List what is in quarantine and can be brought back");
    const auto verbose = std::make_shared<bool>(false);
    verb.add_flag("--verbose", *verbose,
                  "List every item, not only the first 15 of each\nsession, and whole paths");
    verb.callback([&request, verbose] {
        request.run = [verbose](Program& program) { return sessions(program, *verbose); };
    });
}

void declareUndo(CLI::App& parser, Request& request) {
    const auto options = std::make_shared<UndoOptions>();
    CLI::App& verb = addVerb(parser, request, "undo", "Bring back what a clean has put into quarantine");
    addWords(verb, "SESSION", options->sessions,
             "The session to undo; none means the newest that holds something")
        ->expected(1);
    addWords(verb, "--entry", options->entries,
             "Bring back only the item with this stored name; may be repeated")
        ->type_name("STOREDNAME");
    verb.callback([&request, options] {
        request.run = [options](Program& program) { return undo(program, *options); };
    });
}

void declarePurge(CLI::App& parser, Request& request) {
    const auto options = std::make_shared<PurgeOptions>();
    CLI::App& verb =
        addVerb(parser, request, "purge", "Give up a quarantine session for good and free its space");
    addWords(verb, "SESSION", options->sessions, "The session's id, as \"loftmere sessions\" lists it")
        ->expected(1);
    verb.add_flag("--expired", options->expired, "Give up all sessions that have expired");
    verb.callback([&request, options] {
        request.run = [options](Program& program) { return purge(program, *options); };
    });
}

} // namespace loftmere
