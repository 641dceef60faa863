#pragma once

#include "CleanerCore/Records/CleanCategory.h"

#include <optional>
#include <vector>

namespace loftmere {

// The blocks of the sidebar from top to bottom.
enum class SidebarSection { start, cleanup, protection, applications, nextLevel, setup };

struct SidebarSectionTraits {
    SidebarSection value;
    const char* heading; // empty for none
};

template <>
inline constexpr auto tableOf<SidebarSection> = std::to_array<SidebarSectionTraits>({
    {SidebarSection::start, ""},
    {SidebarSection::cleanup, "Cleanup"},
    {SidebarSection::protection, "Protection & Speed"},
    {SidebarSection::applications, "Applications"},
    {SidebarSection::nextLevel, "Next Level"},
    {SidebarSection::setup, "Setup"},
});
static_assert(isComplete<SidebarSection>());

// The screens of the program, in the order of the sidebar.
enum class SidebarItem {
    smartCare,
    systemJunk,
    developer,
    personal,
    clutter,
    cloud,
    security,
    performance,
    maintenance,
    uninstaller,
    updater,
    shredder,
    insights,
    schedules,
    quarantine,
    permissions,
};

struct SidebarTraits {
    SidebarItem value;
    const char* rawValue; // the name of the case
    const char* title;
    const char* icon; // a token that the screens map to a symbol
    SidebarSection section;
    std::optional<CategoryGroup>
        group; // whose categories the screen scans; absent for screens that do not scan
};

template <>
inline constexpr auto tableOf<SidebarItem> = [] {
    using enum SidebarItem;
    using enum SidebarSection;
    using Group = CategoryGroup;
    constexpr std::nullopt_t none = std::nullopt;
    // clang-format off
    return std::to_array<SidebarTraits>({
        {smartCare,   "smartCare",   "Smart Care",          "sparkles",                     start,         none},
        {systemJunk,  "systemJunk",  "System Junk",         "trash.circle",                 cleanup,       Group::system},
        {developer,   "developer",   "Developer Junk",      "hammer.circle",                cleanup,       Group::developer},
        {personal,    "personal",    "Large & Personal",    "externaldrive",                cleanup,       Group::personal},
        {clutter,     "clutter",     "Duplicates & Photos", "doc.on.doc",                   cleanup,       Group::clutter},
        {cloud,       "cloud",       "Cloud Offload",       "icloud.and.arrow.up",          cleanup,       Group::cloud},
        {security,    "security",    "Protection",          "shield.lefthalf.filled",       protection,    none},
        {performance, "performance", "Performance",         "speedometer",                  protection,    none},
        {maintenance, "maintenance", "Maintenance",         "wrench.and.screwdriver",       protection,    none},
        {uninstaller, "uninstaller", "Uninstaller",         "xmark.app",                    applications,  none},
        {updater,     "updater",     "Updater",             "arrow.triangle.2.circlepath",  applications,  none},
        {shredder,    "shredder",    "The Shredder",        "scissors",                     nextLevel,     none},
        {insights,    "insights",    "Space Insights",      "chart.line.uptrend.xyaxis",    nextLevel,     none},
        {schedules,   "schedules",   "Schedules",           "calendar.badge.clock",         nextLevel,     none},
        {quarantine,  "quarantine",  "Undo & History",      "arrow.uturn.backward.circle",  nextLevel,     none},
        {permissions, "permissions", "Setup",               "checkmark.shield",             setup,         none},
    });
    // clang-format on
}();
static_assert(isComplete<SidebarItem>() && isNamedByCases<SidebarItem>());

// What a screen scans; empty for all but the cleanup screens.
inline std::vector<CleanCategory> categoriesOf(SidebarItem item) {
    const auto group = traits(item).group;
    return group ? casesWith(&CategoryTraits::group, *group) : std::vector<CleanCategory>{};
}

} // namespace loftmere
