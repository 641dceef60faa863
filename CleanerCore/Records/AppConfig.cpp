#include "CleanerCore/Records/AppConfig.h"

#include "CleanerCore/Support/RecordCodec.h"

namespace loftmere {

namespace {

constexpr auto defaulted = Presence::defaulted;

constexpr std::tuple fields{
    field("quarantineRetentionDays", &AppConfig::quarantineRetentionDays, defaulted),
    field("quarantineEverything", &AppConfig::quarantineEverything, defaulted),
    field("disposalOverrides", &AppConfig::disposalOverrides, defaulted),
    field("protectedPaths", &AppConfig::protectedPaths, defaulted),
    field("developerRoots", &AppConfig::developerRoots, defaulted),
    field("staleProjectDays", &AppConfig::staleProjectDays, defaulted),
    field("oldDownloadsDays", &AppConfig::oldDownloadsDays, defaulted),
    field("largeFileMinMB", &AppConfig::largeFileMinMB, defaulted),
    field("largeFileAgeDays", &AppConfig::largeFileAgeDays, defaulted),
    field("xcodeArchiveAgeDays", &AppConfig::xcodeArchiveAgeDays, defaulted),
    field("logAgeDays", &AppConfig::logAgeDays, defaulted),
    field("minItemAgeHours", &AppConfig::minItemAgeHours, defaulted),
    field("hasCompletedOnboarding", &AppConfig::hasCompletedOnboarding, defaulted),
    field("queueAdminRemovals", &AppConfig::queueAdminRemovals, defaulted),
};

} // namespace

LOFTMERE_RECORD_CODEC(AppConfig, fields)

Disposal AppConfig::disposal(CleanCategory category) const {
    const auto& row = traits(category);
    if (row.disposalRule == DisposalRule::fixed) return row.defaultDisposal;
    const auto chosen = disposalOverrides.find(row.rawValue);
    if (chosen != disposalOverrides.end()) return chosen->second;
    if (quarantineEverything && row.disposalRule == DisposalRule::switchable) return Disposal::quarantine;
    return row.defaultDisposal;
}

} // namespace loftmere
