#pragma once

#include "CleanerCore/Records/ScanItem.h"
#include "LoftmereApp/Model/Published.h"

#include <map>
#include <optional>
#include <set>
#include <string>

namespace loftmere {

// What scans found, what is ticked of it, and which scans are running.
struct ScanFields : FieldGroup {
    using FieldGroup::FieldGroup;

    // The last scan's result for each category. A category that was never scanned has no entry.
    Published<std::map<CleanCategory, CategoryResult>> results{main_};

    // The ids of the ticked items. They need not be in `results`.
    Published<std::set<std::string>> selected{main_};

    Published<std::set<CleanCategory>> scanningCategories{main_};

    // What a running scan is looking at, and for which category. Empty when no scan is running.
    Published<std::string> scanStatus{main_};
    Published<std::optional<CleanCategory>> scanStatusCategory{main_};
};

} // namespace loftmere
