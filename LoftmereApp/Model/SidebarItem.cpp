#include "LoftmereApp/Model/SidebarItem.h"

#include <array>

namespace loftmere {

namespace {

using enum CleanCategory;
using Item = SidebarItem;

constexpr std::array systemCategories{userCaches, logs, crashReports, trash, savedAppState, mailDownloads};
constexpr std::array developerCategories{xcode, simulators, projectArtifacts, packageCaches, docker};
constexpr std::array personalCategories{iosBackups, iosUpdates, oldDownloads, installers, largeOldFiles};
constexpr std::array clutterCategories{duplicates, similarPhotos};
constexpr std::array cloudCategories{cloudLocalCopies};
constexpr std::span<const CleanCategory> none;

// clang-format off
constexpr std::array table{
    SidebarTraits{Item::smartCare,   "smartCare",   "Smart Care",          "sparkles",                     none},
    SidebarTraits{Item::systemJunk,  "systemJunk",  "System Junk",         "trash.circle",                 systemCategories},
    SidebarTraits{Item::developer,   "developer",   "Developer Junk",      "hammer.circle",                developerCategories},
    SidebarTraits{Item::personal,    "personal",    "Large & Personal",    "externaldrive",                personalCategories},
    SidebarTraits{Item::clutter,     "clutter",     "Duplicates & Photos", "doc.on.doc",                   clutterCategories},
    SidebarTraits{Item::cloud,       "cloud",       "Cloud Offload",       "icloud.and.arrow.up",          cloudCategories},
    SidebarTraits{Item::security,    "security",    "Protection",          "shield.lefthalf.filled",       none},
    SidebarTraits{Item::performance, "performance", "Performance",         "speedometer",                  none},
    SidebarTraits{Item::maintenance, "maintenance", "Maintenance",         "wrench.and.screwdriver",       none},
    SidebarTraits{Item::uninstaller, "uninstaller", "Uninstaller",         "xmark.app",                    none},
    SidebarTraits{Item::updater,     "updater",     "Updater",             "arrow.triangle.2.circlepath",  none},
    SidebarTraits{Item::shredder,    "shredder",    "The Shredder",        "scissors",                     none},
    SidebarTraits{Item::insights,    "insights",    "Space Insights",      "chart.line.uptrend.xyaxis",    none},
    SidebarTraits{Item::schedules,   "schedules",   "Schedules",           "calendar.badge.clock",         none},
    SidebarTraits{Item::quarantine,  "quarantine",  "Undo & History",      "arrow.uturn.backward.circle",  none},
    SidebarTraits{Item::permissions, "permissions", "Setup",               "checkmark.shield",             none},
};
// clang-format on

constexpr std::array startItems{Item::smartCare};
constexpr std::array cleanupItems{Item::systemJunk, Item::developer, Item::personal, Item::clutter,
                                  Item::cloud};
constexpr std::array protectionItems{Item::security, Item::performance, Item::maintenance};
constexpr std::array applicationItems{Item::uninstaller, Item::updater};
constexpr std::array nextLevelItems{Item::shredder, Item::insights, Item::schedules, Item::quarantine};
constexpr std::array setupItems{Item::permissions};

constexpr std::array sections{
    SidebarSection{"", startItems},
    SidebarSection{"Cleanup", cleanupItems},
    SidebarSection{"Protection & Speed", protectionItems},
    SidebarSection{"Applications", applicationItems},
    SidebarSection{"Next Level", nextLevelItems},
    SidebarSection{"Setup", setupItems},
};

} // namespace

std::span<const SidebarTraits> allSidebarItems() {
    return table;
}

const SidebarTraits& traits(SidebarItem item) {
    return table[static_cast<size_t>(item)];
}

std::optional<SidebarItem> sidebarItemNamed(std::string_view rawValue) {
    for (const SidebarTraits& row : table) {
        if (rawValue == row.rawValue) return row.item;
    }
    return std::nullopt;
}

std::span<const SidebarSection> sidebarSections() {
    return sections;
}

} // namespace loftmere
