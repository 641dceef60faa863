#pragma once

#include "terminal/Program.h"

#include <span>
#include <string_view>
#include <vector>

// What people read about a clean, before and after.
namespace loftmere {

// How many of the items a clean would act on, and their bytes.
struct Extent {
    size_t count = 0;
    int64_t bytes = 0;
};
Extent extentOf(const std::vector<ScanItem>& items, const CleanPreview& preview);

// Shows what a clean would do, item by item, grouped by what becomes of them. Without `full`, a terminal sees
// only the first items of each group.
void printPreview(Program& program, const std::vector<ScanItem>& items, const CleanPreview& preview,
                  bool full);

// What a clean of the items did, or would do: what failed and why, the sum, and how to undo it.
void printCleanReport(Program& program, const std::vector<ScanItem>& items, const CleanReport& report,
                      bool dryRun);

// A heading and a line for each item that could not be handled, if there are any. Those among `items` are
// named as people know them, others by their id.
void printFailures(Program& program, std::string_view heading, std::span<const CleanFailure> failures,
                   std::span<const ScanItem> items = {});

} // namespace loftmere
