#include "CleanerCore/Safety/RemovalPermit.h"

#include "CleanerCore/Files/JSONStore.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>

namespace loftmere {

ClearedItem::ClearedItem(Place place, std::string path, std::optional<std::string> provider)
    : place_(std::move(place)), path_(std::move(path)), provider_(std::move(provider)) {}

Result<RemovalPermit> RemovalPermit::ask(const Paths& paths, const AppConfig& config) {
    const auto onDisk = ConfigStore(paths).read();
    if (!onDisk) return failed(refusal(paths.configFile()));
    std::vector<std::string> protectedPaths = config.protectedPaths;
    for (const std::string& path : onDisk->protectedPaths) {
        const bool isKnown = std::ranges::find(protectedPaths, path) != protectedPaths.end();
        if (!isKnown) protectedPaths.push_back(path);
    }
    return RemovalPermit(paths, protectedPaths);
}

Failure RemovalPermit::refusal(const std::string& file) {
    return Failure::saying(
        fmt::format("the settings in {} cannot be read; what you protect there is not known "
                    "until they are mended or removed",
                    file));
}

RemovalPermit::RemovalPermit(const Paths& paths, const std::vector<std::string>& protectedPaths)
    : home_(paths.home()), policy_(paths, protectedPaths) {}

RemovalPermit::Judgement RemovalPermit::judge(const std::string& path) const {
    const auto noItem = [](SafetyPolicy::Verdict verdict, Failure why) {
        return Judgement{std::move(verdict), failed(std::move(why))};
    };
    std::string normal = normalize(path);
    auto place = Place::open(normal);
    if (!place) return noItem(policy_.check(path), std::move(place.error()));
    auto verdict = policy_.check(path, *place);
    if (const auto* blocked = std::get_if<SafetyPolicy::Blocked>(&verdict)) {
        Failure why = Failure::saying(blocked->reason);
        return noItem(std::move(verdict), std::move(why));
    }
    if (std::holds_alternative<SafetyPolicy::NeedsAdmin>(verdict))
        return noItem(std::move(verdict), Failure::posix(EACCES, "remove", path));
    std::optional<std::string> provider;
    if (const auto* synced = std::get_if<SafetyPolicy::SyncedCloud>(&verdict)) provider = synced->provider;
    return {std::move(verdict), ClearedItem(std::move(*place), std::move(normal), std::move(provider))};
}

std::expected<ClearedPath, SafetyPolicy::Blocked> RemovalPermit::clearForRoot(const std::string& path) const {
    auto verdict = policy_.check(path);
    if (auto* blocked = std::get_if<SafetyPolicy::Blocked>(&verdict))
        return std::unexpected(std::move(*blocked));
    return ClearedPath(normalize(path));
}

} // namespace loftmere
