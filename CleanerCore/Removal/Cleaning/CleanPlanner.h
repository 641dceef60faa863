#pragma once

#include "CleanerCore/Files/Paths.h"
#include "CleanerCore/Platform/Place.h"
#include "CleanerCore/Records/AppConfig.h"
#include "CleanerCore/Records/CleanReport.h"
#include "CleanerCore/Records/ScanItem.h"
#include "CleanerCore/Removal/Cleaning/CleanPlan.h"
#include "CleanerCore/Safety/SafetyPolicy.h"

#include <optional>
#include <string>
#include <vector>

namespace loftmere {

// Decides what is to happen to an item. What its volume or a missing tool forbids is foreseen, so that
// nothing is begun that cannot be ended. Changes nothing. Any thread.
class CleanPlanner {
public:
    // `place` is what was judged and is to be acted on; it is there for `quarantine`, `trash` and `remove`.
    struct Decision {
        CleanPlan plan;
        std::optional<Place> place = std::nullopt;
    };

    CleanPlanner(const Paths& paths, const AppConfig& config);

    // Looks at the disk as it is now, however recent the scan was.
    Decision decide(const ScanItem& item, const TriggerSource& trigger,
                    std::optional<Disposal> disposalOverride) const;

    // What becomes of a path that needs root when its turn comes.
    CleanPlan planForAdmin(const std::string& path) const;

    // Whether the user's own rights were all that was missing for this path.
    bool mayAskForAdmin(const std::string& path) const;

    // The path as the policy reads it, which is the one that is acted on.
    std::string normalize(const std::string& path) const { return policy_.normalize(path, paths_.home()); }

private:
    Decision decideEviction(const std::string& path) const;
    Decision decidePath(const ScanItem& item, const std::string& path, const TriggerSource& trigger,
                        std::optional<Disposal> disposalOverride) const;
    Decision decideReachable(const ScanItem& item, Place place, std::optional<std::string> provider,
                             std::optional<Disposal> disposalOverride) const;
    Status mayActOn(const Place& place, const CleanPlan& plan) const;
    Status mayQuarantine(const Place& place) const;

    Paths paths_;
    AppConfig config_;
    SafetyPolicy policy_;
    std::vector<std::string> mountPoints_; // when this was made
};

} // namespace loftmere
