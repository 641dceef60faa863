#pragma once

#include "CleanerCore/Records/CleanCategory.h"

#include <optional>
#include <span>
#include <string_view>

namespace loftmere {

// The screens of the program, in declared order.
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

// One row of the table of screens.
struct SidebarTraits {
    SidebarItem item;
    const char* rawValue; // the case's name
    const char* title;
    const char* icon;                          // a token that the screens map to a symbol
    std::span<const CleanCategory> categories; // what the screen scans; empty for all but the cleanup screens
};

// One block of the sidebar; the first one's heading is empty.
struct SidebarSection {
    const char* heading;
    std::span<const SidebarItem> items;
};

// All 16 rows, in declared order.
std::span<const SidebarTraits> allSidebarItems();

const SidebarTraits& traits(SidebarItem item);

// The item with this raw value, absent when there is none.
std::optional<SidebarItem> sidebarItemNamed(std::string_view rawValue);

// The sidebar from top to bottom.
std::span<const SidebarSection> sidebarSections();

} // namespace loftmere
