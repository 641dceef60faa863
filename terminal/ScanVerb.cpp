#include "CleanerCore/Support/ByteFormat.h"
#include "CleanerCore/Support/ByteSum.h"
#include "CleanerCore/Support/Text.h"
#include "terminal/Layout.h"
#include "terminal/ScanRun.h"
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

void printItems(Console& console, const std::vector<ScanItem>& items, const std::set<std::string>& ticked,
                bool full) {
    const std::string shared = sharedReason(items);
    if (!shared.empty()) printParagraph(console, Ink::dim, printable(shared), noteIndent);
    const std::string tick = fmt::format(" {}", console.glyphs().tick);
    std::vector<Row> rows;
    for (const ScanItem& item : items) {
        rows.push_back({.lead = ticked.contains(item.id) ? tick : "",
                        .leadInk = Ink::green,
                        .size = item.size,
                        .tag = riskTag(item.risk),
                        .tagInk = inkOf(item.risk),
                        .title = printable(item.title),
                        .note = shared.empty() ? printable(item.reason) : ""});
    }
    printRows(console, rows, full);
}

void printResult(Console& console, const CategoryResult& result, const std::set<std::string>& ticked,
                 bool full) {
    const std::string count = counted(result.items.size(), "item");
    const std::string right =
        result.error ? "" : fmt::format("{}  {:>9}", count, ByteFormat::string(result.totalSize()));
    printHeading(console, traits(result.category).displayName, right);
    if (result.error)
        printParagraph(console, Ink::red, "Could not be scanned: " + printable(*result.error), noteIndent);
    else
        printItems(console, result.items, ticked, full);
    console.printLine();
}

struct Sum {
    size_t count = 0;
    int64_t bytes = 0;

    void add(const ScanItem& item) {
        ++count;
        addBytes(bytes, item.size);
    }
    std::string text() const {
        return fmt::format("{}, {}", counted(count, "item"), ByteFormat::string(bytes));
    }
};

void printTotals(Program& program, const std::vector<const CategoryResult*>& results,
                 const std::string& cleanCommand) {
    Sum found;
    Sum ticked;
    for (const CategoryResult* result : results) {
        for (const ScanItem& item : result->items) {
            found.add(item);
            if (program.model().selected->contains(item.id)) ticked.add(item);
        }
    }
    Console& console = program.console();
    if (found.count == 0) {
        console.printLine("Nothing to remove here right now.");
    } else {
        console.printLine(console.paint(Ink::bold, "Found   ") + found.text());
        console.printLine(console.paint(Ink::bold, "Ticked  ") + ticked.text());
        if (ticked.count > 0)
            printParagraph(console, Ink::dim, fmt::format("\"{}\" removes them", cleanCommand), totalIndent);
    }
    if (const auto& space = *program.model().space) {
        console.printLine(
            console.paint(Ink::bold, "Disk    ") +
            fmt::format("{} free of {}", ByteFormat::string(space->free), ByteFormat::string(space->total)));
    }
}

void printScan(Program& program, const std::vector<CleanCategory>& categories,
               const std::vector<std::string>& names, bool full) {
    std::vector<std::string> cleanCommand{"loftmere", "clean"};
    cleanCommand.insert(cleanCommand.end(), names.begin(), names.end());
    const auto results = resultsOf(program.model(), categories);
    std::vector<std::string> empty;
    for (const CategoryResult* result : results) {
        if (result->items.empty() && !result->error)
            empty.emplace_back(traits(result->category).displayName);
        else
            printResult(program.console(), *result, program.model().selected, full);
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
    bool full = false;
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
        printScan(program, *categories, options.names, options.full);
    return status;
}

} // namespace

void declareScan(CLI::App& parser, Request& request) {
    const auto options = std::make_shared<Options>();
    CLI::App& verb =
        addVerb(parser, request, "scan", "Find what could go, how much it is, why, and at what risk");
    verb.add_option("NAME", options->names, "Categories and sections to look through; none means all");
    verb.add_flag("--full", options->full, "Show every finding, not only the largest of each category");
    verb.footer(namesHelp());
    verb.callback([&request, options] {
        request.run = [options](Program& program) { return scan(program, *options); };
    });
}

} // namespace loftmere
