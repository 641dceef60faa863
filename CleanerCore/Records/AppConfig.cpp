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

Disposal AppConfig::disposal(CleanCategory category) const {
    // Docker's items are commands: there is nothing to move aside.
    if (category == CleanCategory::docker) return Disposal::remove;
    const auto chosen = disposalOverrides.find(rawValue(category));
    if (chosen != disposalOverrides.end()) return chosen->second;
    if (category > CleanCategory::cloudLocalCopies) return Disposal::quarantine;
    // Moving the Trash to quarantine would only make it a second Trash.
    if (quarantineEverything && category != CleanCategory::trash) return Disposal::quarantine;
    return traits(category).defaultDisposal;
}

Json JsonCodec<AppConfig>::encode(const AppConfig& value) {
    return encodeRecord(value, fields);
}

std::optional<AppConfig> JsonCodec<AppConfig>::decode(const Json& json) {
    return decodeRecord(json, AppConfig{}, fields);
}

} // namespace loftmere
