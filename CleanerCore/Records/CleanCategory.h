#pragma once

#include "CleanerCore/Records/Disposal.h"
#include "CleanerCore/Support/Json.h"

#include <optional>
#include <span>
#include <string_view>

namespace loftmere {

// The sections that categories belong to, in the order of the screen.
enum class CategoryGroup { system, developer, personal, clutter, cloud, security, apps };

// The raw value, which is also the text on screen, such as "System Junk".
const char* rawValue(CategoryGroup group);

// What a scan can look for. The declared order is meaningful: results are shown in it.
enum class CleanCategory {
    userCaches,
    logs,
    crashReports,
    trash,
    savedAppState,
    mailDownloads,
    iosBackups,
    iosUpdates,
    oldDownloads,
    installers,
    largeOldFiles,
    xcode,
    simulators,
    projectArtifacts,
    packageCaches,
    docker,
    duplicates,
    similarPhotos,
    cloudLocalCopies,
    securityThreats,
    appBundle,
    appLeftovers,
    orphanedLeftovers,
};

// One row of the table of categories.
struct CategoryTraits {
    CleanCategory category;
    const char* rawValue; // the case's name; also its id and its JSON
    const char* displayName;
    CategoryGroup group;
    const char* systemImage; // a token that the screens map to an icon
    Disposal defaultDisposal;
    bool isRegenerable;     // the content comes back by itself, so undo is not needed
    bool selectedByDefault; // its safe items are ticked after a scan
};

// All 23 rows, in declared order.
std::span<const CategoryTraits> allCategories();

const CategoryTraits& traits(CleanCategory category);

inline const char* rawValue(CleanCategory category) {
    return traits(category).rawValue;
}

// The category with this raw value, absent when there is none.
std::optional<CleanCategory> categoryNamed(std::string_view rawValue);

LOFTMERE_JSON_CODEC(CategoryGroup);
LOFTMERE_JSON_CODEC(CleanCategory);

} // namespace loftmere
