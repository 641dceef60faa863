#include "CleanerCore/Records/CleanReport.h"

#include "CleanerCore/Support/ByteCount.h"
#include "CleanerCore/Support/RecordCodec.h"

namespace loftmere {

namespace {

constexpr std::tuple triggerCases{
    variantCase<ManualTrigger>("manual"),
    variantCase<ScheduleTrigger>("schedule", field("ruleName", &ScheduleTrigger::ruleName)),
    variantCase<UninstallTrigger>("uninstall", field("appName", &UninstallTrigger::appName)),
};

constexpr std::tuple failureFields{
    field("itemID", &CleanFailure::itemID),
    field("message", &CleanFailure::message),
};

constexpr std::tuple reportFields{
    field("freedBytes", &CleanReport::freedBytes),
    field("evictedBytes", &CleanReport::evictedBytes),
    field("quarantinedBytes", &CleanReport::quarantinedBytes),
    field("trashedBytes", &CleanReport::trashedBytes),
    field("itemsProcessed", &CleanReport::itemsProcessed),
    field("failures", &CleanReport::failures),
    field("quarantineSessionID", &CleanReport::quarantineSessionID),
    field("skippedProtected", &CleanReport::skippedProtected),
    field("deferredAdmin", &CleanReport::deferredAdmin),
};

struct Labeller {
    std::string operator()(const ManualTrigger&) const { return "Manual"; }
    std::string operator()(const ScheduleTrigger& trigger) const { return "Schedule: " + trigger.ruleName; }
    std::string operator()(const UninstallTrigger& trigger) const { return "Uninstall: " + trigger.appName; }
};

} // namespace

LOFTMERE_VARIANT_CODEC(TriggerSource, triggerCases)
LOFTMERE_RECORD_CODEC(CleanFailure, failureFields)
LOFTMERE_RECORD_CODEC(CleanReport, reportFields)

std::string label(const TriggerSource& trigger) {
    return std::visit(Labeller{}, trigger);
}

int64_t CleanReport::totalHandledBytes() const {
    int64_t total = 0;
    for (const int64_t bytes : {freedBytes, quarantinedBytes, trashedBytes, evictedBytes})
        addBytes(total, bytes);
    return total;
}

} // namespace loftmere
