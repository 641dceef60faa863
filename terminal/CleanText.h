#pragma once

#include "terminal/Layout.h"
#include "terminal/Program.h"

#include <span>
#include <string_view>
#include <vector>

// What people read about a clean, before and after.
namespace loftmere {

// The items that a clean would act on.
Extent extentOf(const Plan& plan);

// Shows what a clean would do, item by item, grouped by what becomes of them. Unless `verbose`, a
// terminal sees only the first items of each group.
void printPreview(Program& program, const Plan& plan, bool verbose);

// What a clean of the items did, or would do: what failed and why, the sum, and how to undo it.
void printCleanReport(Program& program, const std::vector<ScanItem>& items, const CleanReport& report,
                      bool dryRun);

// A heading and a line for each item that could not be handled, if there are any. Those among `items` are
// named as people know them, others by their id.
void printFailures(Program& program, std::string_view heading, std::span<const CleanFailure> failures,
                   std::span<const ScanItem> items = {});

// "2 expired sessions, 5 MB".
std::string shownPurge(const ExpiredPurge& purge);

} // namespace loftmere
