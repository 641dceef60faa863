#include "CleanerCore/Safety/SafetyPolicy.h"

#include "CleanerCore/Platform/FileStatus.h"
#include "CleanerCore/Platform/Place.h"
#include "CleanerCore/Safety/CloudPaths.h"
#include "CleanerCore/Safety/LinkResolver.h"
#include "CleanerCore/Safety/PathKey.h"
#include "CleanerCore/Safety/ProtectedLocations.h"
#include "CleanerCore/Support/PathText.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <optional>
#include <span>

namespace loftmere {

namespace {

using Verdict = SafetyPolicy::Verdict;
using Blocked = SafetyPolicy::Blocked;

constexpr const char* leadsOutside = "Symlinked folder leads outside your home folder";

struct UserRule {
    PathKey root;
    std::string reason;
};

// A real path within the home folder, spelled from the home folder as it is given; any other as it is.
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

Verdict stricter(Verdict a, Verdict b) {
    constexpr std::array strictness{0, 2, 1, 3}; // Allowed, SyncedCloud, NeedsAdmin, Blocked
    return strictness[a.index()] < strictness[b.index()] ? b : a;
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

    // A root, and what it leads to where it is a link or is reached through one.
    std::vector<PathKey> withTarget(const std::string& root, LinkResolver& resolver) const;

    // The root of the file system is nobody's home: everything would be the user's own.
    bool isInHome(const PathKey& path) const {
        return home.path().starts_with('/') && home.path() != "/" && path.isAtOrUnder(home);
    }

    // Whether a path must not be touched wherever else it may lie.
    std::optional<Blocked> veto(const PathKey& path) const;
};

// A path, where it really leads, and the same spelled from the home folder as it is given.
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

Verdict SafetyPolicy::check(const std::string& path, LinkResolver& resolver) const {
    std::string normal = normalize(path, rules_->home.path());
    // The system would read a path only up to a zero byte and so reach another one than was judged.
    if (!normal.starts_with('/') || normal.contains('\0')) return Blocked{"Not an absolute path"};
    const PathKey key(std::move(normal));
    if (auto vetoed = rules_->veto(key)) return *vetoed;
    const std::string real =
        joinPath(resolver.resolve(parentPath(key.path())), lastPathComponent(key.path()));
    return judge(key, real, resolver.resolve(rules_->home.path()));
}

Verdict SafetyPolicy::check(const std::string& path, const Place& place) const {
    Verdict verdict = check(path);
    if (std::holds_alternative<Blocked>(verdict)) return verdict;
    return stricter(std::move(verdict), judgeReal(path, place.realPath()));
}

Verdict SafetyPolicy::judge(const PathKey& path, const std::string& real, const std::string& realHome) const {
    std::optional<PathKey> elsewhere;
    const PathKey& realKey = real == path.path() ? path : elsewhere.emplace(real);
    const std::string spelled = spelledFromHome(real, rules_->home.path(), realHome);
    std::optional<PathKey> respelled;
    const PathKey& spelledKey = spelled == real ? realKey : respelled.emplace(spelled);
    const Location location{path, realKey, spelledKey};
    return rules_->isInHome(path) ? judgeInHome(location) : judgeOutside(location);
}

Verdict SafetyPolicy::judgeInHome(const Location& location) const {
    if (!rules_->isInHome(location.spelled)) return Blocked{leadsOutside};
    // A link to a protected folder must be no way round its protection.
    if (auto vetoed = rules_->veto(location.spelled)) return *vetoed;
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
    if (auto vetoed = rules_->veto(location.spelled)) return *vetoed;
    if (path.path().starts_with("/Applications/") && isUserWritable(path.path())) return Allowed{};
    return NeedsAdmin{};
}

Verdict SafetyPolicy::judgeReal(const std::string& path, const std::string& realPath) const {
    LinkResolver resolver;
    const std::string realHome = resolver.resolve(rules_->home.path());
    const std::string real = standardizedPath(realPath);
    const PathKey spelled(spelledFromHome(real, rules_->home.path(), realHome));
    const PathKey asked(normalize(path, rules_->home.path()));
    if (rules_->isInHome(asked) && !rules_->isInHome(spelled)) return Blocked{leadsOutside};
    if (auto vetoed = rules_->veto(spelled)) return *vetoed;
    return judge(spelled, real, realHome);
}

SafetyPolicy::Batch::Batch(const SafetyPolicy& policy)
    : policy_(policy), resolver_(std::make_unique<LinkResolver>()) {}

SafetyPolicy::Batch::~Batch() = default;

Verdict SafetyPolicy::Batch::check(const std::string& path) {
    return policy_.check(path, *resolver_);
}

} // namespace loftmere
