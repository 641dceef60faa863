#include "CleanerCore/Support/RecordCodec.h"
#include "terminal/Findings.h"
#include "terminal/Verbs.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <limits>

namespace loftmere {

namespace {

constexpr size_t usualLimit = 50;

// The last word as a count; absent when it is no whole number. What is beyond all numbers is all there is.
std::optional<size_t> limitOf(const std::vector<std::string>& words) {
    if (words.empty()) return usualLimit;
    const std::string& word = words.back();
    size_t limit = 0;
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), limit);
    if (word.empty() || end != word.data() + word.size() || error == std::errc::invalid_argument)
        return std::nullopt;
    return error == std::errc::result_out_of_range ? std::numeric_limits<size_t>::max() : limit;
}

Row rowOf(Program& program, const AuditEntry& entry) {
    Row row = targetRow(program, entry.target);
    row.lead = shownDate(entry.date);
    row.leadInk = Ink::dim;
    if (entry.size != 0) row.size = entry.size;
    row.tag = printable(entry.action);
    row.tagInk = entry.success ? Ink::plain : Ink::red;
    row.note = (entry.success ? "" : "not done: ") + shownMessage(entry.message.value_or(""));
    return row;
}

ExitStatus history(Program& program, const std::vector<std::string>& words) {
    Console& console = program.console();
    const auto limit = limitOf(words);
    if (!limit) {
        console.say(
            fmt::format("--limit takes a whole number from 0 on, not \"{}\"", printable(words.back())));
        return ExitStatus::usage;
    }
    const auto entries = program.finish(program.model().history(*limit), [] { return "Reading the log"; });
    const auto& failure = *program.model().auditFailure;
    if (failure) console.say(printable(*failure));
    const ExitStatus status = failure ? ExitStatus::failed : ExitStatus::done;
    if (program.json()) {
        program.print(JsonCodec<std::vector<AuditEntry>>::encode(entries));
        return status;
    }
    std::vector<Row> rows;
    for (const AuditEntry& entry : entries) rows.push_back(rowOf(program, entry));
    printRows(console, rows);
    if (rows.empty() && !failure) console.printLine("Nothing was done yet.");
    return status;
}

} // namespace

void declareHistory(CLI::App& parser, Request& request) {
    const auto limit = std::make_shared<std::vector<std::string>>();
    CLI::App& verb =
        addVerb(parser, request, "history", "List what was done and what was refused, newest first");
    addWords(verb, "--limit", *limit, "How many actions to list, 50 unless given")
        ->type_name("N")
        ->expected(1);
    verb.callback(
        [&request, limit] { request.run = [limit](Program& program) { return history(program, *limit); }; });
}

} // namespace loftmere
