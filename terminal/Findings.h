#pragma once

#include "terminal/Layout.h"
#include "terminal/Program.h"

#include <string>
#include <vector>

// How verbs find things and list them.
namespace loftmere {

// The categories that the names on a command line mean, each once. A name is that of a category or of a
// section ("systemJunk"); no names mean all categories of all sections. For any other name the failure lists
// the names there are.
Result<std::vector<CleanCategory>> categoriesNamed(const std::vector<std::string>& names);

// All names, as a help text shows them.
std::string namesHelp();

// Scans the categories as opening their sections does, ticks included, with a live status meanwhile. Says
// which of them no scan looks for. `failed` when a category could not be scanned; its result says why.
ExitStatus runScan(Program& program, const std::vector<CleanCategory>& categories);

// How a finding is listed: size, risk, and where it lies. A title that says more than the path comes first.
Row findingRow(Program& program, const ScanItem& item);

// A row that names a path, or anything else by its title.
Row targetRow(Program& program, const std::string& target);

} // namespace loftmere
