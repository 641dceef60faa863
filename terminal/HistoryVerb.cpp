#include "CleanerCore/Support/RecordCodec.h"
#include "CleanerCore/Support/Text.h"
#include "terminal/Layout.h"
#include "terminal/Verbs.h"

#include <CLI/CLI.hpp>

namespace loftmere {

namespace {

constexpr int64_t usualLimit = 50;

// A path in short, anything else as it is.
std::string shownTarget(Program& program, const std::string& target) {
    return target.starts_with('/') ? program.shown(target) : printable(target);
}

Row rowOf(Program& program, const AuditEntry& entry) {
    return {.lead = shownDate(entry.date),
            .leadInk = Ink::dim,
            .size = entry.size != 0 ? std::optional(entry.size) : std::nullopt,
            .tag = printable(entry.action),
            .tagInk = entry.success ? Ink::plain : Ink::red,
            .title = shownTarget(program, entry.target),
            .titleIsPath = entry.target.starts_with('/'),
            .note = (entry.success ? "" : "not done: ") + printable(entry.message.value_or(""))};
}

ExitStatus history(Program& program, int64_t limit) {
    const auto entries =
        program.finish(program.model().history(static_cast<size_t>(limit)), [] { return "Reading the log"; });
    if (program.json()) {
        program.print(JsonCodec<std::vector<AuditEntry>>::encode(entries));
        return ExitStatus::done;
    }
    std::vector<Row> rows;
    for (const AuditEntry& entry : entries) rows.push_back(rowOf(program, entry));
    printRows(program.console(), rows);
    if (rows.empty()) program.console().printLine("Nothing was done yet.");
    return ExitStatus::done;
}

} // namespace

void declareHistory(CLI::App& parser, Request& request) {
    const auto limit = std::make_shared<int64_t>(usualLimit);
    CLI::App& verb =
        addVerb(parser, request, "history", "Tell what was done and what was refused, newest first");
    verb.add_option("--limit", *limit, "How many actions to tell, 50 unless given")
        ->type_name("N")
        ->check(CLI::NonNegativeNumber);
    verb.callback(
        [&request, limit] { request.run = [limit](Program& program) { return history(program, *limit); }; });
}

} // namespace loftmere
