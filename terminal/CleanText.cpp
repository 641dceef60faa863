#include "terminal/CleanText.h"

#include "CleanerCore/Support/ByteCount.h"
#include "CleanerCore/Support/Text.h"
#include "terminal/Findings.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

namespace loftmere {

namespace {

constexpr int noteIndent = 3;

struct Group {
    PlannedAction action;
    const char* heading;
    const char* note; // what it means for the user; empty where the heading says it all
    bool acts;        // something is done to the item
};

// In the order in which they are shown.
// clang-format off
constexpr std::array groups{
    Group{PlannedAction::remove,        label(Disposal::remove),                "", true},
    Group{PlannedAction::command,       "Run a command",                        "", true},
    Group{PlannedAction::trash,         label(Disposal::trash),                 "", true},
    Group{PlannedAction::quarantine,    label(Disposal::quarantine),            "", true},
    Group{PlannedAction::evict,         "Offload to cloud",                     "Local copies are removed. Files stay in the cloud and download again when you open them.", true},
    Group{PlannedAction::queueForAdmin, "Wait for administrator rights",        "Removed with --admin, after one password prompt.", true},
    Group{PlannedAction::removeAsAdmin, "Delete with administrator rights",     "Asks for the password.", true},
    Group{PlannedAction::gone,          "Already gone",                         "", false},
    Group{PlannedAction::skip,          "Skipped",                              "", false},
    Group{PlannedAction::fail,          "Cannot be cleaned",                    "", false},
};
// clang-format on

const Group& groupOf(PlannedAction action) {
    for (const Group& group : groups) {
        if (group.action == action) return group;
    }
    return groups.back();
}

void printGroup(Program& program, const Group& group, const std::vector<Row>& rows, bool verbose) {
    Console& console = program.console();
    Extent extent;
    for (const Row& row : rows) extent.add(row.size.value_or(0));
    printHeading(console, group.heading, extent);
    std::string note = group.note;
    if (group.action == PlannedAction::quarantine) {
        const int64_t days = std::max<int64_t>(program.model().config->quarantineRetentionDays, 0);
        note = fmt::format("Quarantined items can be restored for {}.",
                           counted(static_cast<size_t>(days), "day"));
    }
    if (!note.empty()) printParagraph(console, Ink::dim, note, noteIndent);
    printRows(console, rows, verbose);
    console.printLine();
}

// Says which removals reach the user's other machines.
void warnOfSynced(Console& console, const Plan& plan) {
    size_t count = 0;
    std::set<std::string> providers;
    for (const auto& [item, decision] : plan.items) {
        if (!decision.provider || !groupOf(decision.action).acts) continue;
        ++count;
        providers.insert(*decision.provider);
    }
    if (count == 0) return;
    const std::string names = joined({providers.begin(), providers.end()}, " and ");
    printParagraph(console, Ink::red, fmt::format("{} of these live in {}.", count, printable(names)), 0);
    printParagraph(
        console, Ink::red,
        "Removing them here removes them from every device signed in to that account — this is not just a "
        "local copy, and undo on this Mac cannot bring them back.",
        0);
    console.printLine();
}

// Says what the clean deletes from quarantine.
void printExpired(Program& program) {
    ExpiredPurge expired;
    for (const QuarantineSession& session : *program.model().sessions) {
        if (session.expiresAt > currentDate()) continue;
        expired.purged.push_back(session.id);
        addBytes(expired.bytes, session.totalSize());
    }
    if (expired.purged.empty()) return;
    printParagraph(program.console(), Ink::yellow,
                   fmt::format("Also deletes from quarantine: {}.", shownPurge(expired)), 0);
    program.console().printLine();
}

// The summary counts bytes only. Items without bytes were cleaned all the same.
std::string summaryOf(const std::vector<ScanItem>& items, const CleanReport& report, bool dryRun) {
    const bool hasBytes = report.totalHandledBytes() > 0 || !report.failures.empty();
    if (hasBytes || items.empty() || dryRun) return AppModel::summary(report, dryRun);
    return "Cleaned " + counted(static_cast<size_t>(report.itemsProcessed), "item");
}

// An id begins with how the item is removed, which says nothing to a person.
std::string nameOf(const std::string& itemID, std::span<const ScanItem> items) {
    const auto item = std::ranges::find(items, itemID, &ScanItem::id);
    if (item == items.end()) return itemID;
    return item->anyPath() != nullptr ? *item->anyPath() : item->title;
}

// A clean may begin a session and then find nothing that can go there.
bool canBeUndone(Program& program, const CleanReport& report) {
    if (!report.quarantineSessionID) return false;
    const auto& held = *program.model().sessions;
    const auto session = std::ranges::find(held, *report.quarantineSessionID, &QuarantineSession::id);
    return session != held.end() && session->activeCount() > 0;
}

} // namespace

Extent extentOf(const Plan& plan) {
    Extent extent;
    for (const auto& [item, decision] : plan.items) {
        if (groupOf(decision.action).acts) extent.add(item.size);
    }
    return extent;
}

void printPreview(Program& program, const Plan& plan, bool verbose) {
    for (const Group& group : groups) {
        std::vector<Row> rows;
        for (const auto& [item, decision] : plan.items) {
            if (decision.action != group.action) continue;
            rows.push_back(findingRow(program, item));
            rows.back().note = shownMessage(decision.message);
        }
        if (!rows.empty()) printGroup(program, group, rows, verbose);
    }
    if (!plan.items.empty()) printExpired(program);
    warnOfSynced(program.console(), plan);
}

void printFailures(Program& program, std::string_view heading, std::span<const CleanFailure> failures,
                   std::span<const ScanItem> items) {
    if (failures.empty()) return;
    Console& console = program.console();
    console.printLine(console.paint(Ink::red, heading));
    std::vector<Row> rows;
    for (const CleanFailure& failure : failures) {
        rows.push_back(targetRow(program, nameOf(failure.itemID, items)));
        rows.back().note = shownMessage(failure.message);
    }
    printRows(console, rows);
    console.printLine();
}

void printCleanReport(Program& program, const std::vector<ScanItem>& items, const CleanReport& report,
                      bool dryRun) {
    // The preview of a dry run has shown each failure with its item.
    if (!dryRun) printFailures(program, "Failed", report.failures, items);
    Console& console = program.console();
    console.printLine(console.paint(Ink::bold, summaryOf(items, report, dryRun)));
    if (dryRun) return console.printLine("Nothing was changed.");
    if (items.empty()) return;
    if (canBeUndone(program, report))
        console.printLine(fmt::format("Undo with: loftmere undo {}", printable(*report.quarantineSessionID)));
    if (const auto& space = *program.model().space) console.printLine(shownSpace(*space));
}

std::string shownPurge(const ExpiredPurge& purge) {
    return fmt::format("{}, {}", counted(purge.purged.size(), "expired session"),
                       ByteFormat::string(purge.bytes));
}

} // namespace loftmere
