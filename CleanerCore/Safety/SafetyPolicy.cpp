#include "CleanerCore/Safety/SafetyPolicy.h"

#include "CleanerCore/Platform/FileStatus.h"
#include "CleanerCore/Platform/Place.h"
#include "CleanerCore/Safety/CloudPaths.h"
#include "CleanerCore/Safety/PathKey.h"
#include "CleanerCore/Safety/ProtectedLocations.h"
#include "CleanerCore/Support/PathText.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <span>

namespace loftmere {

namespace {

using Verdict = SafetyPolicy::Verdict;
using Blocked = SafetyPolicy::Blocked;

constexpr const char* notAbsolute = "Not an absolute path";
constexpr const char* leadsOutside = "Symlinked folder leads outside your home folder";

struct UserRule {
    PathKey root;
    std::string reason;
};

// A real path within the home folder, spelled from the home folder as the user knows it. Any other real path
// unchanged.
std::string spelledFromHome(const std::string& realPath, const std::string& home,
                            const std::string& realHome) {
    if (home == realHome) return realPath;
    const PathKey key(realPath);
    const PathKey realKey(realHome);
    return key.isAtOrUnder(realKey) ? joinPath(home, key.below(realKey)) : realPath;
}

std::vector<PathKey> keysOf(std::span<const std::string_view> roots) {
    std::vector<PathKey> keys;
    for (const std::string_view root : roots) keys.emplace_back(std::string(root));
    return keys;
}

bool isUserWritable(const std::string& path) {
    return isWritable(parentPath(path)) && isWritable(path);
}

struct Strictness {
    int operator()(const SafetyPolicy::Allowed&) const { return 0; }
    int operator()(const SafetyPolicy::NeedsAdmin&) const { return 1; }
    int operator()(const SafetyPolicy::SyncedCloud&) const { return 2; }
    int operator()(const Blocked&) const { return 3; }
};

Verdict stricter(Verdict a, Verdict b) {
    return std::visit(Strictness{}, a) < std::visit(Strictness{}, b) ? b : a;
}

} // namespace

struct SafetyPolicy::Rules {
    PathKey home;
    std::vector<PathKey> containers;
    std::vector<UserRule> userProtected;
    std::vector<PathKey> homeBlocked;
    std::vector<PathKey> systemBlocked = keysOf(ProtectedLocations::systemBlocked);
    std::vector<PathKey> adminRoots = keysOf(ProtectedLocations::adminRoots);
    std::vector<PathKey> syncRoots;

    Rules(const std::string& homePath, const std::vector<std::string>& userRoots);

    // A root, and also where it leads when it is a link or is reached through one.
    std::vector<PathKey> withTarget(const std::string& root, LinkResolver& resolver) const;

    // The root of the file system counts as nobody's home: everything would be the user's own.
    bool isInHome(const PathKey& path) const {
        return home.path().starts_with('/') && home.path() != "/" && path.isAtOrUnder(home);
    }

    // Why the path must not be touched, wherever else it may lie. Absent when nothing speaks against it.
    std::optional<Blocked> veto(const PathKey& path) const;
};

// A path, where it really leads, and that place spelled from the home folder as the user knows it. Two or all
// three may be the same object.
struct SafetyPolicy::Location {
    const PathKey& path;
    const PathKey& real;
    const PathKey& spelled;
};

SafetyPolicy::Rules::Rules(const std::string& homePath, const std::vector<std::string>& userRoots)
    : home(homePath) {
    LinkResolver resolver;
    const auto addTo = [&](std::vector<PathKey>& keys, const std::string& root) {
        for (PathKey& key : withTarget(root, resolver)) keys.push_back(std::move(key));
    };
    for (const auto& name : ProtectedLocations::homeContainers) addTo(containers, joinPath(homePath, name));
    for (const auto& path : ProtectedLocations::systemContainers) addTo(containers, std::string(path));
    for (const auto& name : ProtectedLocations::homeBlocked) addTo(homeBlocked, joinPath(homePath, name));
    for (const std::string& root : CloudFiles::syncRoots(homePath)) syncRoots.emplace_back(root);
    for (const std::string& rule : userRoots) {
        const std::string root = normalize(rule, homePath);
        for (PathKey& key : withTarget(root, resolver)) {
            userProtected.push_back({std::move(key), fmt::format("Protected by your rules ({})", root)});
        }
    }
}

std::vector<PathKey> SafetyPolicy::Rules::withTarget(const std::string& root, LinkResolver& resolver) const {
    std::vector<PathKey> keys{PathKey(root)};
    if (!root.starts_with('/')) return keys;
    const std::string realHome = resolver.resolve(home.path());
    const std::string target = spelledFromHome(resolver.resolve(root), home.path(), realHome);
    if (target != root) keys.emplace_back(target);
    return keys;
}

std::optional<Blocked> SafetyPolicy::Rules::veto(const PathKey& path) const {
    const auto overlaps = [&](const PathKey& root) { return path.overlaps(root); };
    if (std::ranges::any_of(containers, [&](const PathKey& root) { return path.isSame(root); })) {
        return Blocked{"Top-level folder"};
    }
    const auto rule = std::ranges::find_if(userProtected, overlaps, &UserRule::root);
    if (rule != userProtected.end()) return Blocked{rule->reason};
    if (std::ranges::any_of(homeBlocked, overlaps)) return Blocked{"Protected personal data"};
    if (path.contains(".photoslibrary")) return Blocked{"Photos library"};
    return std::nullopt;
}

SafetyPolicy::SafetyPolicy(const Paths& paths, const std::vector<std::string>& userProtected)
    : rules_(std::make_shared<const Rules>(paths.home(), userProtected)) {}

bool SafetyPolicy::safeForAutomation(const Verdict& verdict) {
    return std::holds_alternative<Allowed>(verdict) || std::holds_alternative<NeedsAdmin>(verdict);
}

std::string SafetyPolicy::normalize(std::string_view path, std::string_view home) {
    return normalizedPath(path, home);
}

Verdict SafetyPolicy::check(const std::string& path) const {
    LinkResolver resolver;
    return check(path, resolver);
}

Verdict SafetyPolicy::check(const std::string& path, const Place& place) const {
    LinkResolver resolver;
    return check(path, place, resolver);
}

std::optional<PathKey> SafetyPolicy::keyOf(const std::string& path) const {
    std::string normal = normalize(path, rules_->home.path());
    // The system reads a path only up to a zero byte, and so would reach another item than the judged one.
    if (!normal.starts_with('/') || normal.contains('\0')) return std::nullopt;
    return PathKey(std::move(normal));
}

Verdict SafetyPolicy::check(const std::string& path, LinkResolver& resolver) const {
    const auto key = keyOf(path);
    if (!key) return Blocked{notAbsolute};
    const std::string folder = resolver.resolve(parentPath(key->path()));
    const std::string real = joinPath(folder, lastPathComponent(key->path()));
    return judge(*key, real, resolver.resolve(rules_->home.path()));
}

Verdict SafetyPolicy::check(const std::string& path, const Place& place, LinkResolver& resolver) const {
    const auto key = keyOf(path);
    if (!key) return Blocked{notAbsolute};
    const std::string& home = rules_->home.path();
    // Usually there is no link on the way to the place, and so none on the way to the home folder above it.
    const bool hasNoLink = place.realPath() == key->path();
    if (hasNoLink && isAtOrUnder(key->path(), home)) return judge(*key, key->path(), home);
    Verdict asWritten = check(path, resolver);
    if (std::holds_alternative<Blocked>(asWritten)) return asWritten;
    const std::string real = standardizedPath(place.realPath());
    const std::string realHome = resolver.resolve(home);
    const PathKey spelled(spelledFromHome(real, home, realHome));
    if (rules_->isInHome(*key) && !rules_->isInHome(spelled)) return Blocked{leadsOutside};
    return stricter(std::move(asWritten), judge(spelled, real, realHome));
}

Verdict SafetyPolicy::judge(const PathKey& path, const std::string& real, const std::string& realHome) const {
    if (auto vetoed = rules_->veto(path)) return *vetoed;
    std::optional<PathKey> elsewhere;
    const PathKey& realKey = real == path.path() ? path : elsewhere.emplace(real);
    const std::string spelled = spelledFromHome(real, rules_->home.path(), realHome);
    std::optional<PathKey> respelled;
    const PathKey& spelledKey = spelled == real ? realKey : respelled.emplace(spelled);
    const Location location{path, realKey, spelledKey};
    return rules_->isInHome(path) ? judgeInHome(location) : judgeOutside(location);
}

// A link to a protected folder must be no way round its protection.
std::optional<Blocked> SafetyPolicy::vetoOnTarget(const Location& location) const {
    if (&location.spelled == &location.path) return std::nullopt; // judged already
    return rules_->veto(location.spelled);
}

Verdict SafetyPolicy::judgeInHome(const Location& location) const {
    if (!rules_->isInHome(location.spelled)) return Blocked{leadsOutside};
    if (auto vetoed = vetoOnTarget(location)) return *vetoed;
    for (const PathKey* path : {&location.path, &location.spelled}) {
        const auto holdsPath = [&](const PathKey& root) { return path->isAtOrUnder(root); };
        if (!std::ranges::any_of(rules_->syncRoots, holdsPath)) continue;
        return SyncedCloud{CloudFiles::providerName(path->path(), rules_->home.path())};
    }
    return Allowed{};
}

Verdict SafetyPolicy::judgeOutside(const Location& location) const {
    const PathKey& path = location.path;
    for (const PathKey& root : rules_->systemBlocked) {
        if (path.isAtOrUnder(root) || location.real.isAtOrUnder(root)) return Blocked{"System location"};
    }
    const auto holdsPath = [&](const PathKey& root) { return path.isUnder(root); };
    if (!std::ranges::any_of(rules_->adminRoots, holdsPath)) return Blocked{"Outside allowed locations"};
    if (auto vetoed = vetoOnTarget(location)) return *vetoed;
    if (path.path().starts_with("/Applications/") && isUserWritable(path.path())) return Allowed{};
    return NeedsAdmin{};
}

SafetyPolicy::Batch::Batch(const SafetyPolicy& policy)
    : policy_(policy), resolver_(std::make_unique<LinkResolver>()) {}

SafetyPolicy::Batch::~Batch() = default;

Verdict SafetyPolicy::Batch::check(const std::string& path) {
    return policy_.check(path, *resolver_);
}

Verdict SafetyPolicy::Batch::check(const std::string& path, const Place& place) {
    return policy_.check(path, place, *resolver_);
}

} // namespace loftmere
