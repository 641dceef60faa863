#pragma once

#include "terminal/Program.h"

#include <string>
#include <vector>

// What the verbs that scan share.
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

} // namespace loftmere
