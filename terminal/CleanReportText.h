#pragma once

#include "CleanerCore/Records/CleanReport.h"
#include "CleanerCore/Records/ScanItem.h"
#include "terminal/Session.h"

#include <span>
#include <string>
#include <vector>

namespace loftmere {

// What a clean of the items did, or would do: what failed and why, the sum, and how to undo it.
void printCleanReport(Session& session, const std::vector<ScanItem>& items, const CleanReport& report,
                      bool dryRun);

// A heading and a line for each item that could not be handled, if there are any. Those among `items` are
// named as people know them, others by their id.
void printFailures(Session& session, std::string_view heading, std::span<const CleanFailure> failures,
                   std::span<const ScanItem> items = {});

// A bar that is filled by a share from 0 to 1.
std::string bar(const Console& console, double share);

} // namespace loftmere
