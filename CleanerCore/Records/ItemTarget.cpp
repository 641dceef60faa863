#include "CleanerCore/Records/ItemTarget.h"

#include "CleanerCore/Records/EnumerationCodec.h"

namespace loftmere {

namespace {

struct Encoder {
    Json operator()(const PathTarget& target) const { return encodeCase("path", {{"_0", target.path}}); }
    Json operator()(const CommandTarget& target) const {
        return encodeCase("command", {{"_0", JsonCodec<CommandSpec>::encode(target.command)}});
    }
    Json operator()(const AdminPathTarget& target) const {
        return encodeCase("adminPath", {{"_0", target.path}});
    }
    Json operator()(const EvictTarget& target) const { return encodeCase("evict", {{"_0", target.path}}); }
};

} // namespace

Json JsonCodec<ItemTarget>::encode(const ItemTarget& value) {
    return std::visit(Encoder{}, value);
}

std::optional<ItemTarget> JsonCodec<ItemTarget>::decode(const Json& json) {
    const auto found = decodeCase(json);
    if (!found) return std::nullopt;
    const auto& [name, payload] = *found;
    if (name == "command") {
        auto command = payloadValue<CommandSpec>(payload, "_0");
        if (!command) return std::nullopt;
        return CommandTarget{std::move(*command)};
    }
    auto path = payloadValue<std::string>(payload, "_0");
    if (!path) return std::nullopt;
    if (name == "path") return PathTarget{std::move(*path)};
    if (name == "adminPath") return AdminPathTarget{std::move(*path)};
    if (name == "evict") return EvictTarget{std::move(*path)};
    return std::nullopt;
}

} // namespace loftmere
