#include "CleanerCore/Removal/AuditLog.h"
#include "CleanerCore/Support/RecordCodec.h"
#include "CleanerCore/Support/Text.h"
#include "terminal/Rows.h"
#include "terminal/Verbs.h"

#include <CLI/CLI.hpp>

namespace loftmere {

namespace {

constexpr int64_t usualLimit = 50;

// A path in short, anything else as it is.
std::string shownTarget(Session& session, const std::string& target) {
    return target.starts_with('/') ? session.shown(target) : printable(target);
}

Row rowOf(Session& session, const AuditEntry& entry) {
    return {.lead = shownDate(entry.date),
            .leadInk = Ink::dim,
            .size = entry.size != 0 ? std::optional(entry.size) : std::nullopt,
            .tag = printable(entry.action),
            .tagInk = entry.success ? Ink::plain : Ink::red,
            .title = shownTarget(session, entry.target),
            .titleIsPath = entry.target.starts_with('/'),
            .note = (entry.success ? "" : "not done: ") + printable(entry.message.value_or(""))};
}

ExitStatus history(Session& session, int64_t limit) {
    // The model keeps the newest few; here any number may be asked for.
    const auto entries = AuditLog(session.model().paths).recent(static_cast<size_t>(limit));
    if (session.json()) {
        session.print(JsonCodec<std::vector<AuditEntry>>::encode(entries));
        return ExitStatus::done;
    }
    std::vector<Row> rows;
    for (const AuditEntry& entry : entries) rows.push_back(rowOf(session, entry));
    printRows(session.console(), rows);
    if (rows.empty()) session.console().printLine("Nothing was done yet.");
    return ExitStatus::done;
}

} // namespace

void declareHistory(CLI::App& program, Request& request) {
    const auto limit = std::make_shared<int64_t>(usualLimit);
    CLI::App& verb =
        addVerb(program, request, "history", "Tell what was done and what was refused, newest first");
    verb.add_option("--limit", *limit, "How many actions to tell, 50 unless given")
        ->type_name("N")
        ->check(CLI::NonNegativeNumber);
    verb.callback(
        [&request, limit] { request.run = [limit](Session& session) { return history(session, *limit); }; });
}

} // namespace loftmere
