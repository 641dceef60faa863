#include "CleanerCore/Records/TriggerSource.h"

#include "CleanerCore/Records/EnumerationCodec.h"

namespace loftmere {

namespace {

struct Labeller {
    std::string operator()(const ManualTrigger&) const { return "Manual"; }
    std::string operator()(const ScheduleTrigger& trigger) const { return "Schedule: " + trigger.ruleName; }
    std::string operator()(const UninstallTrigger& trigger) const { return "Uninstall: " + trigger.appName; }
};

struct Encoder {
    Json operator()(const ManualTrigger&) const { return encodeCase("manual", Json::object()); }
    Json operator()(const ScheduleTrigger& trigger) const {
        return encodeCase("schedule", {{"ruleName", trigger.ruleName}});
    }
    Json operator()(const UninstallTrigger& trigger) const {
        return encodeCase("uninstall", {{"appName", trigger.appName}});
    }
};

} // namespace

std::string label(const TriggerSource& trigger) {
    return std::visit(Labeller{}, trigger);
}

Json JsonCodec<TriggerSource>::encode(const TriggerSource& value) {
    return std::visit(Encoder{}, value);
}

std::optional<TriggerSource> JsonCodec<TriggerSource>::decode(const Json& json) {
    const auto found = decodeCase(json);
    if (!found) return std::nullopt;
    const auto& [name, payload] = *found;
    if (name == "manual") return ManualTrigger{};
    if (name == "schedule") {
        auto ruleName = payloadValue<std::string>(payload, "ruleName");
        if (ruleName) return ScheduleTrigger{std::move(*ruleName)};
    }
    if (name == "uninstall") {
        auto appName = payloadValue<std::string>(payload, "appName");
        if (appName) return UninstallTrigger{std::move(*appName)};
    }
    return std::nullopt;
}

} // namespace loftmere
