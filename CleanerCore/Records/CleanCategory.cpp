#include "CleanerCore/Records/CleanCategory.h"

#include <nlohmann/json.hpp>

#include <array>

namespace loftmere {

namespace {

using enum CleanCategory;
using Group = CategoryGroup;

constexpr bool yes = true;
constexpr bool no = false;

// clang-format off
constexpr std::array table{
    CategoryTraits{userCaches,        "userCaches",        "User Caches",                     Group::system,    "archivebox",                Disposal::remove,     yes, yes},
    CategoryTraits{logs,              "logs",              "Logs",                            Group::system,    "doc.text",                  Disposal::remove,     yes, yes},
    CategoryTraits{crashReports,      "crashReports",      "Crash & Diagnostic Reports",      Group::system,    "exclamationmark.triangle",  Disposal::remove,     yes, yes},
    CategoryTraits{trash,             "trash",             "Trash",                           Group::system,    "trash",                     Disposal::remove,     no,  yes},
    CategoryTraits{savedAppState,     "savedAppState",     "Saved Window State",              Group::system,    "macwindow",                 Disposal::remove,     yes, yes},
    CategoryTraits{mailDownloads,     "mailDownloads",     "Mail Attachments Cache",          Group::system,    "envelope",                  Disposal::remove,     yes, yes},
    CategoryTraits{iosBackups,        "iosBackups",        "iPhone/iPad Backups",             Group::personal,  "iphone",                    Disposal::quarantine, no,  no},
    CategoryTraits{iosUpdates,        "iosUpdates",        "iOS Firmware Files",              Group::personal,  "arrow.down.app",            Disposal::quarantine, no,  no},
    CategoryTraits{oldDownloads,      "oldDownloads",      "Old Downloads",                   Group::personal,  "arrow.down.circle",         Disposal::quarantine, no,  no},
    CategoryTraits{installers,        "installers",        "Leftover Installers (.dmg/.pkg)", Group::personal,  "shippingbox",               Disposal::quarantine, no,  no},
    CategoryTraits{largeOldFiles,     "largeOldFiles",     "Large & Forgotten Files",         Group::personal,  "externaldrive",             Disposal::quarantine, no,  no},
    CategoryTraits{xcode,             "xcode",             "Xcode Build Data",                Group::developer, "hammer",                    Disposal::remove,     yes, yes},
    CategoryTraits{simulators,        "simulators",        "Simulators & Device Support",     Group::developer, "ipad.and.iphone",           Disposal::remove,     yes, yes},
    CategoryTraits{projectArtifacts,  "projectArtifacts",  "Stale Project Dependencies",      Group::developer, "folder.badge.gearshape",    Disposal::remove,     yes, yes},
    CategoryTraits{packageCaches,     "packageCaches",     "Package Manager Caches",          Group::developer, "cube.box",                  Disposal::remove,     yes, yes},
    CategoryTraits{docker,            "docker",            "Docker",                          Group::developer, "server.rack",               Disposal::remove,     yes, yes},
    CategoryTraits{duplicates,        "duplicates",        "Duplicate Files",                 Group::clutter,   "doc.on.doc",                Disposal::quarantine, no,  no},
    CategoryTraits{similarPhotos,     "similarPhotos",     "Similar Photos",                  Group::clutter,   "photo.on.rectangle.angled", Disposal::quarantine, no,  no},
    CategoryTraits{cloudLocalCopies,  "cloudLocalCopies",  "Cloud Files Stored Locally",      Group::cloud,     "icloud.and.arrow.up",       Disposal::remove,     no,  no},
    CategoryTraits{securityThreats,   "securityThreats",   "Suspicious Background Items",     Group::security,  "shield.lefthalf.filled",    Disposal::quarantine, no,  no},
    CategoryTraits{appBundle,         "appBundle",         "Applications",                    Group::apps,      "app",                       Disposal::quarantine, no,  no},
    CategoryTraits{appLeftovers,      "appLeftovers",      "App Leftovers",                   Group::apps,      "app.badge",                 Disposal::quarantine, no,  no},
    CategoryTraits{orphanedLeftovers, "orphanedLeftovers", "Orphaned Files (deleted apps)",   Group::apps,      "questionmark.folder",       Disposal::quarantine, no,  no},
};

constexpr std::array groupNames{
    "System Junk", "Developer", "Personal Files", "Clutter", "Cloud", "Security", "Apps",
};
// clang-format on

} // namespace

const char* rawValue(CategoryGroup group) {
    return groupNames[static_cast<size_t>(group)];
}

std::span<const CategoryTraits> allCategories() {
    return table;
}

const CategoryTraits& traits(CleanCategory category) {
    return table[static_cast<size_t>(category)];
}

std::optional<CleanCategory> categoryNamed(std::string_view rawValue) {
    for (const CategoryTraits& row : table) {
        if (rawValue == row.rawValue) return row.category;
    }
    return std::nullopt;
}

Json JsonCodec<CategoryGroup>::encode(const CategoryGroup& value) {
    return rawValue(value);
}

std::optional<CategoryGroup> JsonCodec<CategoryGroup>::decode(const Json& json) {
    if (!json.is_string()) return std::nullopt;
    for (size_t i = 0; i < groupNames.size(); ++i) {
        if (json.get_ref<const std::string&>() == groupNames[i]) return static_cast<CategoryGroup>(i);
    }
    return std::nullopt;
}

Json JsonCodec<CleanCategory>::encode(const CleanCategory& value) {
    return rawValue(value);
}

std::optional<CleanCategory> JsonCodec<CleanCategory>::decode(const Json& json) {
    if (!json.is_string()) return std::nullopt;
    return categoryNamed(json.get_ref<const std::string&>());
}

} // namespace loftmere
