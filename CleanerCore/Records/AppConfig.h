#pragma once

#include "CleanerCore/Records/CleanCategory.h"
#include "CleanerCore/Support/Json.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace loftmere {

// All settings of the user, each with its default.
struct AppConfig {
    int64_t quarantineRetentionDays = 7; // days a quarantine session is kept
    bool quarantineEverything = false;
    std::map<std::string, Disposal> disposalOverrides = {}; // by category raw value
    std::vector<std::string> protectedPaths = {};           // the user's never-touch list
    std::vector<std::string> developerRoots = {};           // empty: auto-detect
    int64_t staleProjectDays = 30;
    int64_t oldDownloadsDays = 180;
    int64_t largeFileMinMB = 500;
    int64_t largeFileAgeDays = 120;
    int64_t xcodeArchiveAgeDays = 180;
    int64_t logAgeDays = 3;
    int64_t minItemAgeHours = 1; // nothing that changed more recently is proposed
    bool hasCompletedOnboarding = false;
    bool queueAdminRemovals = true; // gather items that need a password for one prompt

    // What happens to the items of a category. Nothing else decides that.
    Disposal disposal(CleanCategory category) const;

    bool operator==(const AppConfig&) const = default;
};

// No key is required: a missing or null one takes its default. One value of the wrong type fails the whole
// record.
LOFTMERE_JSON_CODEC(AppConfig);

} // namespace loftmere
