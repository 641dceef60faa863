#include "terminal/CleanReportText.h"

#include "CleanerCore/Automation/ScheduledRunner.h"
#include "CleanerCore/Support/ByteFormat.h"
#include "CleanerCore/Support/Text.h"
#include "terminal/Rows.h"
#include "terminal/SessionLookup.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>

namespace loftmere {

namespace {

constexpr int barWidth = 24;

// The summary speaks of bytes; where there were items but no bytes, it would deny that anything was asked.
std::string summaryOf(const std::vector<ScanItem>& items, const CleanReport& report, bool dryRun) {
    const bool hasBytes = report.totalHandledBytes() > 0 || !report.failures.empty();
    if (hasBytes || items.empty() || dryRun) return ScheduledRunner::summarize(report, dryRun);
    return "Cleaned " + counted(static_cast<size_t>(report.itemsProcessed), "item");
}

// The id of an item tells by a prefix how it is removed, which is nothing to a person.
std::string nameOf(const std::string& itemID, std::span<const ScanItem> items) {
    const auto item = std::ranges::find(items, itemID, &ScanItem::id);
    if (item == items.end()) return itemID;
    return item->anyPath() != nullptr ? *item->anyPath() : item->title;
}

// A clean may begin a session and then find nothing that can go there.
bool canBeUndone(Session& session, const CleanReport& report) {
    if (!report.quarantineSessionID) return false;
    const auto held = sessionNamed(session, *report.quarantineSessionID);
    return held && held->activeCount() > 0;
}

} // namespace

void printFailures(Session& session, std::string_view heading, std::span<const CleanFailure> failures,
                   std::span<const ScanItem> items) {
    if (failures.empty()) return;
    Console& console = session.console();
    console.printLine(console.paint(Ink::red, heading));
    std::vector<Row> rows;
    for (const CleanFailure& failure : failures) {
        rows.push_back({.title = session.shown(nameOf(failure.itemID, items)),
                        .titleIsPath = true,
                        .note = printable(failure.message)});
    }
    printRows(console, rows);
    console.printLine();
}

void printCleanReport(Session& session, const std::vector<ScanItem>& items, const CleanReport& report,
                      bool dryRun) {
    // The preview has told a dry run's failures with each item.
    if (!dryRun) printFailures(session, "Failed", report.failures, items);
    Console& console = session.console();
    console.printLine(console.paint(Ink::bold, summaryOf(items, report, dryRun)));
    if (dryRun) return console.printLine("Nothing was changed.");
    if (items.empty()) return;
    if (canBeUndone(session, report))
        console.printLine(fmt::format("Undo with: loftmere undo {}", printable(*report.quarantineSessionID)));
    if (const auto& space = *session.model().space)
        console.printLine(
            fmt::format("{} free of {}", ByteFormat::string(space->free), ByteFormat::string(space->total)));
}

std::string bar(const Console& console, double share) {
    const int done = static_cast<int>(std::clamp(share, 0.0, 1.0) * barWidth);
    std::string text;
    for (int i = 0; i < barWidth; ++i) text += i < done ? console.glyphs().barDone : console.glyphs().barLeft;
    return text;
}

} // namespace loftmere
