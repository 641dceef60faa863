#include "LoftmereApp/Model/AppModel.h"

#include <algorithm>

namespace loftmere {

void AppModel::open(SidebarItem item) {
    section = item;
    postWhileAlive([this, item] { load(item); });
}

void AppModel::load(SidebarItem item) {
    switch (item) {
    case SidebarItem::smartCare:
    case SidebarItem::schedules:
    case SidebarItem::quarantine: refreshSafety(); break;
    case SidebarItem::systemJunk:
    case SidebarItem::developer:
    case SidebarItem::personal:
    case SidebarItem::clutter:
    case SidebarItem::cloud: scanIfNew(item); break;
    case SidebarItem::insights: refreshBasics(); break;
    default: break; // nothing to load
    }
}

void AppModel::scanIfNew(SidebarItem item) {
    const std::vector<CleanCategory> categories = categoriesOf(item);
    const auto hasResult = [&](CleanCategory category) { return results->contains(category); };
    if (std::ranges::any_of(categories, hasResult)) return;
    const auto isJunk = [](CleanCategory category) { return traits(category).isJunk; };
    scan(categories, std::ranges::all_of(categories, isJunk));
}

} // namespace loftmere
