#pragma once

#include "CleanerCore/Files/Paths.h"
#include "CleanerCore/Records/AppConfig.h"
#include "CleanerCore/Records/CleanCategory.h"
#include "CleanerCore/Support/Date.h"

#include <functional>
#include <string>
#include <string_view>

namespace loftmere {

// What every scanner of one scan is given, shared read-only by all of them.
struct ScanContext {
    Paths paths;
    AppConfig config;
    Date now; // one moment for the whole scan

    // Both may be called from any thread at any time. `report` takes the text of the work in hand; it is
    // thinned out behind, so it may be called for every path looked at.
    std::function<bool()> isCancelled;
    std::function<void(CleanCategory, const std::string&)> report;

    Date daysAgo(int64_t days) const;
    const std::string& home() const { return paths.home(); }
    std::string homeURL(std::string_view relative) const; // `relative` below the home folder
    std::string lib(std::string_view relative) const { return paths.lib(relative); }

    // Changed less than `config.minItemAgeHours` before `now`, or in the future. False without a date.
    bool isFresh(const std::string& path) const;
};

} // namespace loftmere
