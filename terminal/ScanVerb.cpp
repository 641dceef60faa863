#include "CleanerCore/Support/ByteCount.h"
#include "CleanerCore/Support/Text.h"
#include "terminal/Findings.h"
#include "terminal/Verbs.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>

namespace loftmere {

namespace {

constexpr int noteIndent = 3;
constexpr int totalIndent = 8;

// The results in the engine's order, which is that of the categories.
std::vector<const CategoryResult*> resultsOf(const AppModel& model,
                                             const std::vector<CleanCategory>& categories) {
    std::vector<const CategoryResult*> results;
    for (const auto& [category, result] : *model.results) {
        if (std::ranges::find(categories, category) != categories.end()) results.push_back(&result);
    }
    return results;
}

// The reason that all items share, else an empty text.
std::string sharedReason(const std::vector<ScanItem>& items) {
    const auto differs = [&](const ScanItem& item) { return item.reason != items.front().reason; };
    return std::ranges::any_of(items, differs) ? "" : items.front().reason;
}

void printItems(Program& program, const std::vector<ScanItem>& items, bool verbose) {
    Console& console = program.console();
    const std::string shared = sharedReason(items);
    if (!shared.empty()) printParagraph(console, Ink::dim, printable(shared), noteIndent);
    const std::string tick = fmt::format(" {}", console.glyphs().tick);
    std::vector<Row> rows;
    for (const ScanItem& item : items) {
        Row& row = rows.emplace_back(findingRow(program, item));
        if (program.model().selected->contains(item.id)) row.lead = tick;
        row.leadInk = Ink::green;
        if (shared.empty()) row.note = printable(item.reason);
    }
    printRows(console, rows, verbose);
}

void printResult(Program& program, const CategoryResult& result, bool verbose) {
    Console& console = program.console();
    Extent found;
    for (const ScanItem& item : result.items) found.add(item.size);
    printHeading(console, traits(result.category).displayName,
                 result.error ? std::nullopt : std::optional(found));
    if (result.error)
        printParagraph(console, Ink::red, "Could not be scanned: " + shownMessage(*result.error), noteIndent);
    else
        printItems(program, result.items, verbose);
    console.printLine();
}

void printTotals(Program& program, const std::vector<const CategoryResult*>& results,
                 const std::string& cleanCommand) {
    Extent found;
    Extent ticked;
    for (const CategoryResult* result : results) {
        for (const ScanItem& item : result->items) {
            found.add(item.size);
            if (program.model().selected->contains(item.id)) ticked.add(item.size);
        }
    }
    Console& console = program.console();
    if (found.count == 0) {
        console.printLine("Nothing to remove here right now.");
    } else {
        printFact(console, "Found", found.text());
        printFact(console, "Ticked", ticked.text());
        if (ticked.count > 0)
            printParagraph(console, Ink::dim, fmt::format("\"{}\" removes them", cleanCommand), totalIndent);
    }
    if (const auto& space = *program.model().space) printFact(console, "Disk", shownSpace(*space));
}

void printScan(Program& program, const std::vector<CleanCategory>& categories,
               const std::vector<std::string>& names, bool verbose) {
    std::vector<std::string> cleanCommand{"loftmere", "clean"};
    cleanCommand.insert(cleanCommand.end(), names.begin(), names.end());
    const auto results = resultsOf(program.model(), categories);
    std::vector<std::string> empty;
    for (const CategoryResult* result : results) {
        if (result->items.empty() && !result->error)
            empty.emplace_back(traits(result->category).displayName);
        else
            printResult(program, *result, verbose);
    }
    Console& console = program.console();
    if (!empty.empty()) {
        printParagraph(console, Ink::dim, "Nothing in " + joined(empty, ", "), 0);
        console.printLine();
    }
    if (!results.empty()) printTotals(program, results, joined(cleanCommand, " "));
}

void printScanJson(Program& program, const std::vector<CleanCategory>& categories) {
    const auto found = resultsOf(program.model(), categories);
    JsonOutput output(program.console());
    output.beginObject();
    output.beginArray("results");
    for (const CategoryResult* result : found) {
        output.beginObject();
        output.value(rawValue(result->category), "category");
        if (result->error) output.value(*result->error, "error");
        output.beginArray("items");
        for (const ScanItem& item : result->items) output.value(JsonCodec<ScanItem>::encode(item));
        output.end();
        output.value(result->totalSize(), "totalSize");
        output.end();
    }
    output.end();
    output.beginArray("selected");
    for (const CategoryResult* result : found) {
        for (const ScanItem& item : result->items) {
            if (program.model().selected->contains(item.id)) output.value(item.id);
        }
    }
    output.end();
    output.end();
}

struct Options {
    std::vector<std::string> names;
    bool verbose = false;
};

ExitStatus scan(Program& program, const Options& options) {
    const auto categories = categoriesNamed(options.names);
    if (!categories) {
        program.console().say(categories.error().message);
        return ExitStatus::usage;
    }
    (void)program.knowsSettings();
    const ExitStatus status = runScan(program, *categories);
    if (program.json())
        printScanJson(program, *categories);
    else
        printScan(program, *categories, options.names, options.verbose);
    return status;
}

} // namespace

void declareScan(CLI::App& parser, Request& request) {
    const auto options = std::make_shared<Options>();
    CLI::App& verb =
        addVerb(parser, request, "scan", "Find what could go, how much it is, why, and at what risk");
    addWords(verb, "NAME", options->names, "Categories and sections to look through; none means all");
    verb.add_flag("--verbose", options->verbose,
                  "List every finding, not only the 15 largest of each\ncategory, and whole paths");
    verb.footer(namesHelp());
    verb.callback([&request, options] {
        request.run = [options](Program& program) { return scan(program, *options); };
    });
}

} // namespace loftmere
