#pragma once

#include "CleanerCore/Support/Enumeration.h"

namespace loftmere {

// What happens to an item when it is cleaned. `remove` has the raw value "delete", which is a keyword of C++.
enum class Disposal { quarantine, trash, remove };

struct DisposalTraits {
    Disposal value;
    const char* rawValue;
    const char* label;
};

template <>
inline constexpr auto tableOf<Disposal> = std::to_array<DisposalTraits>({
    {Disposal::quarantine, "quarantine", "Quarantine (undo)"},
    {Disposal::trash, "trash", "Move to Trash"},
    {Disposal::remove, "delete", "Delete immediately"},
});
static_assert(isComplete<Disposal>());

// The sections that categories belong to, in the order of the screen.
enum class CategoryGroup { system, developer, personal, clutter, cloud, security, apps };

struct GroupTraits {
    CategoryGroup value;
    const char* rawValue; // also the text on screen
};

template <>
inline constexpr auto tableOf<CategoryGroup> = std::to_array<GroupTraits>({
    {CategoryGroup::system, "System Junk"},
    {CategoryGroup::developer, "Developer"},
    {CategoryGroup::personal, "Personal Files"},
    {CategoryGroup::clutter, "Clutter"},
    {CategoryGroup::cloud, "Cloud"},
    {CategoryGroup::security, "Security"},
    {CategoryGroup::apps, "Apps"},
});
static_assert(isComplete<CategoryGroup>());

// What a scan can look for. Results are shown in the declared order.
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

// Which settings can change the disposal of a category.
enum class DisposalRule {
    fixed,       // none: it is always the default, as for commands, which leave nothing to move aside
    overridable, // the user's choice for the category, but not the switch that quarantines everything: a
                 // Trash in quarantine would only be a second Trash
    switchable,  // both, and the choice for the category wins
};

// Everything that is decided per category, and the only place where it is.
struct CategoryTraits {
    CleanCategory value;
    const char* rawValue; // the name of the case; also its id
    const char* displayName;
    CategoryGroup group;
    const char* systemImage; // a token that the screens map to an icon
    int ownerRank;           // of two categories that find the same path, the higher one keeps it
    Disposal defaultDisposal;
    DisposalRule disposalRule;
    bool isJunk;            // all of it comes back by itself or was thrown away; a check-up scans for it
    bool isRegenerable;     // the content comes back by itself, so undo is not needed
    bool selectedByDefault; // its safe items are ticked after a scan that ticks
};

template <>
inline constexpr auto tableOf<CleanCategory> = [] {
    using enum CleanCategory;
    using enum CategoryGroup;
    using enum DisposalRule;
    constexpr auto aside = Disposal::quarantine;
    constexpr auto away = Disposal::remove;
    constexpr bool yes = true;
    constexpr bool no = false;
    // clang-format off
    return std::to_array<CategoryTraits>({
        //                                                                                                                              rank  disposal            junk regen ticked
        {userCaches,        "userCaches",        "User Caches",                     system,    "archivebox",                1, away,  switchable,  yes, yes, yes},
        {logs,              "logs",              "Logs",                            system,    "doc.text",                  1, away,  switchable,  yes, yes, yes},
        {crashReports,      "crashReports",      "Crash & Diagnostic Reports",      system,    "exclamationmark.triangle",  1, away,  switchable,  yes, yes, yes},
        {trash,             "trash",             "Trash",                           system,    "trash",                     1, away,  overridable, yes, no,  yes},
        {savedAppState,     "savedAppState",     "Saved Window State",              system,    "macwindow",                 1, away,  switchable,  yes, yes, yes},
        {mailDownloads,     "mailDownloads",     "Mail Attachments Cache",          system,    "envelope",                  1, away,  switchable,  yes, yes, yes},
        {iosBackups,        "iosBackups",        "iPhone/iPad Backups",             personal,  "iphone",                    2, aside, switchable,  no,  no,  no},
        {iosUpdates,        "iosUpdates",        "iOS Firmware Files",              personal,  "arrow.down.app",            2, aside, switchable,  no,  no,  no},
        {oldDownloads,      "oldDownloads",      "Old Downloads",                   personal,  "arrow.down.circle",         2, aside, switchable,  no,  no,  no},
        {installers,        "installers",        "Leftover Installers (.dmg/.pkg)", personal,  "shippingbox",               2, aside, switchable,  no,  no,  no},
        {largeOldFiles,     "largeOldFiles",     "Large & Forgotten Files",         personal,  "externaldrive",             2, aside, switchable,  no,  no,  no},
        {xcode,             "xcode",             "Xcode Build Data",                developer, "hammer",                    3, away,  switchable,  yes, yes, yes},
        {simulators,        "simulators",        "Simulators & Device Support",     developer, "ipad.and.iphone",           3, away,  switchable,  yes, yes, yes},
        {projectArtifacts,  "projectArtifacts",  "Stale Project Dependencies",      developer, "folder.badge.gearshape",    3, away,  switchable,  yes, yes, yes},
        {packageCaches,     "packageCaches",     "Package Manager Caches",          developer, "cube.box",                  3, away,  switchable,  yes, yes, yes},
        {docker,            "docker",            "Docker",                          developer, "server.rack",               3, away,  fixed,       yes, yes, yes},
        {duplicates,        "duplicates",        "Duplicate Files",                 clutter,   "doc.on.doc",                4, aside, switchable,  no,  no,  no},
        {similarPhotos,     "similarPhotos",     "Similar Photos",                  clutter,   "photo.on.rectangle.angled", 4, aside, switchable,  no,  no,  no},
        {cloudLocalCopies,  "cloudLocalCopies",  "Cloud Files Stored Locally",      cloud,     "icloud.and.arrow.up",       4, away,  switchable,  no,  no,  no},
        {securityThreats,   "securityThreats",   "Suspicious Background Items",     security,  "shield.lefthalf.filled",    5, aside, overridable, no,  no,  no},
        {appBundle,         "appBundle",         "Applications",                    apps,      "app",                       5, aside, overridable, no,  no,  no},
        {appLeftovers,      "appLeftovers",      "App Leftovers",                   apps,      "app.badge",                 5, aside, overridable, no,  no,  no},
        {orphanedLeftovers, "orphanedLeftovers", "Orphaned Files (deleted apps)",   apps,      "questionmark.folder",       5, aside, overridable, no,  no,  no},
    });
    // clang-format on
}();
static_assert(isComplete<CleanCategory>() && isNamedByCases<CleanCategory>());

} // namespace loftmere
