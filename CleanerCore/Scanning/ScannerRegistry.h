#pragma once

#include "CleanerCore/Scanning/JunkScanner.h"

#include <memory>
#include <set>
#include <vector>

namespace loftmere::ScannerRegistry {

using Scanners = std::vector<std::unique_ptr<JunkScanner>>;

// Every scanner there is, made anew on each call, one for each category that has one.
Scanners all();

// Those of `all` whose category is wanted, in the same order.
Scanners scanners(const std::set<CleanCategory>& categories);

} // namespace loftmere::ScannerRegistry
