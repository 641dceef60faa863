#include "CleanerCore/Removal/Cleaning/Plan.h"

#include "CleanerCore/Support/ByteCount.h"
#include "CleanerCore/Support/Text.h"

#include <fmt/format.h>

namespace loftmere {

namespace {

Decision wanted(const ScanItem& item, const AppConfig& config, std::optional<Disposal> chosen) {
    const std::string* path = item.anyPath();
    if (path == nullptr) return {.action = PlannedAction::command};
    // Neither the log nor the list of what can be brought back could say which file it was.
    if (!isValidUTF8(*path)) {
        return {.message = fmt::format("{} has a name that is not valid text, so its removal could not be "
                                       "recorded — rename it first",
                                       printable(*path))};
    }
    if (std::holds_alternative<EvictTarget>(item.target)) return {.action = PlannedAction::evict};
    if (std::holds_alternative<AdminPathTarget>(item.target)) {
        return {.action =
                    config.queueAdminRemovals ? PlannedAction::queueForAdmin : PlannedAction::removeAsAdmin};
    }
    const Disposal disposal = chosen.value_or(config.disposal(item.category));
    return {.action = actionOf(disposal), .disposal = disposal};
}

void account(CleanReport& report, const ScanItem& item, const Decision& decision) {
    switch (decision.action) {
    case PlannedAction::skip: return report.skippedProtected.push_back(repairedUTF8(*item.anyPath()));
    case PlannedAction::fail:
        return report.failures.push_back({repairedUTF8(item.id), repairedUTF8(decision.message)});
    case PlannedAction::gone: ++report.itemsProcessed; return;
    case PlannedAction::evict: return addBytes(report.evictedBytes, item.size);
    default: break;
    }
    // What is held in the cloud only is removed for good, whatever the disposal; it counts as the user chose.
    const bool isKept = decision.disposal == Disposal::quarantine;
    addBytes(isKept ? report.quarantinedBytes : report.freedBytes, item.size);
}

} // namespace

PlannedAction actionOf(Disposal disposal) {
    switch (disposal) {
    case Disposal::quarantine: return PlannedAction::quarantine;
    case Disposal::trash: return PlannedAction::trash;
    case Disposal::remove: break;
    }
    return PlannedAction::remove;
}

Plan Plan::unseen(std::vector<ScanItem> items, TriggerSource trigger, const AppConfig& config,
                  std::optional<Disposal> chosen) {
    Plan plan{.trigger = std::move(trigger), .items = {}};
    plan.items.reserve(items.size());
    for (ScanItem& item : items) {
        Decision decision = wanted(item, config, chosen);
        plan.items.push_back({std::move(item), std::move(decision)});
    }
    return plan;
}

CleanReport Plan::report() const {
    CleanReport report;
    for (const auto& [item, decision] : items) account(report, item, decision);
    return report;
}

} // namespace loftmere
