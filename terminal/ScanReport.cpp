#include "terminal/ScanReport.h"

#include "CleanerCore/Support/ByteFormat.h"
#include "CleanerCore/Support/RecordCodec.h"
#include "CleanerCore/Support/Text.h"
#include "terminal/Rows.h"

#include <fmt/format.h>

#include <algorithm>

namespace loftmere {

namespace {

constexpr size_t shownPerCategory = 15;
constexpr int noteIndent = 3;

// The results in the engine's order, which is that of the categories.
std::vector<const CategoryResult*> resultsOf(const AppModel& model,
                                             const std::vector<CleanCategory>& categories) {
    std::vector<const CategoryResult*> results;
    for (const auto& [category, result] : *model.results) {
        if (std::ranges::find(categories, category) != categories.end()) results.push_back(&result);
    }
    return results;
}

Ink inkOf(Risk risk) {
    switch (risk) {
    case Risk::safe: return Ink::green;
    case Risk::review: return Ink::yellow;
    case Risk::caution: return Ink::red;
    }
    return Ink::plain;
}

// The reason that all items share, else an empty text.
std::string sharedReason(const std::vector<ScanItem>& items) {
    if (items.size() < 2) return {};
    const auto differs = [&](const ScanItem& item) { return item.reason != items.front().reason; };
    return std::ranges::any_of(items, differs) ? "" : items.front().reason;
}

void printItems(Console& console, const std::vector<ScanItem>& items, const std::set<std::string>& ticked,
                bool full) {
    const std::string shared = sharedReason(items);
    if (!shared.empty()) printParagraph(console, Ink::dim, printable(shared), noteIndent);
    const size_t shown =
        full || console.width() == 0 ? items.size() : std::min(items.size(), shownPerCategory);
    std::vector<Row> rows;
    int64_t rest = 0;
    for (size_t i = 0; i < items.size(); ++i) {
        const ScanItem& item = items[i];
        if (i >= shown) {
            rest += item.size;
            continue;
        }
        rows.push_back({.ticked = ticked.contains(item.id),
                        .size = item.size,
                        .tag = label(item.risk),
                        .tagInk = inkOf(item.risk),
                        .title = printable(item.title),
                        .note = shared.empty() ? printable(item.reason) : ""});
    }
    printRows(console, rows);
    if (shown < items.size()) {
        const std::string more =
            fmt::format("+ {} more, {} (--full shows them)", items.size() - shown, ByteFormat::string(rest));
        printParagraph(console, Ink::dim, more, noteIndent);
    }
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
        bytes += item.size;
    }
    std::string text() const {
        return fmt::format("{}, {}", counted(count, "item"), ByteFormat::string(bytes));
    }
};

void printTotals(Session& session, const std::vector<const CategoryResult*>& results) {
    Sum found;
    Sum ticked;
    for (const CategoryResult* result : results) {
        for (const ScanItem& item : result->items) {
            found.add(item);
            if (session.model().selected->contains(item.id)) ticked.add(item);
        }
    }
    Console& console = session.console();
    if (found.count == 0) {
        console.printLine("Nothing to remove here right now.");
    } else {
        console.printLine(console.paint(Ink::bold, "Found   ") + found.text());
        console.printLine(console.paint(Ink::bold, "Ticked  ") + ticked.text());
    }
    if (const auto& space = *session.model().space) {
        console.printLine(
            console.paint(Ink::bold, "Disk    ") +
            fmt::format("{} free of {}", ByteFormat::string(space->free), ByteFormat::string(space->total)));
    }
}

} // namespace

void printScan(Session& session, const std::vector<CleanCategory>& categories, bool full) {
    const auto results = resultsOf(session.model(), categories);
    std::vector<std::string> empty;
    for (const CategoryResult* result : results) {
        if (result->items.empty() && !result->error)
            empty.emplace_back(traits(result->category).displayName);
        else
            printResult(session.console(), *result, session.model().selected, full);
    }
    Console& console = session.console();
    if (!empty.empty()) {
        printParagraph(console, Ink::dim, "Nothing in " + joined(empty, ", "), 0);
        console.printLine();
    }
    if (!results.empty()) printTotals(session, results);
}

Json scanDocument(const AppModel& model, const std::vector<CleanCategory>& categories) {
    Json results = Json::array();
    Json selected = Json::array();
    for (const CategoryResult* result : resultsOf(model, categories)) {
        Json one{{"category", rawValue(result->category)},
                 {"items", JsonCodec<std::vector<ScanItem>>::encode(result->items)},
                 {"totalSize", result->totalSize()}};
        if (result->error) one["error"] = *result->error;
        results.push_back(std::move(one));
        for (const ScanItem& item : result->items) {
            if (model.selected->contains(item.id)) selected.push_back(item.id);
        }
    }
    return {{"results", std::move(results)}, {"selected", std::move(selected)}};
}

} // namespace loftmere
