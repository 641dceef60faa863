#include "CleanerCore/Removal/Quarantine/RestoreDestination.h"

#include "CleanerCore/Platform/FileStatus.h"
#include "CleanerCore/Removal/Quarantine/QuarantineError.h"
#include "CleanerCore/Support/PathText.h"
#include "CleanerCore/Support/Text.h"

#include <fmt/format.h>

#include <cerrno>

namespace loftmere {

namespace {

constexpr const char* noPlainPath = "its original path is not a plain full path";
constexpr const char* insideOwnFolder = "its original path lies in this program's own folder";
constexpr const char* throughLink = "the way to it runs through a link that leads elsewhere";
constexpr const char* neverTaken = "nothing is ever quarantined from there ({})";

bool isPlain(const std::string& path) {
    return path.size() > 1 && path.starts_with('/') && path == standardizedPathText(path) &&
           path.find('\0') == std::string::npos;
}

std::string lowestExistingFolder(const std::string& path) {
    std::string folder = parentPath(path);
    while (folder != "/") {
        const auto status = targetStatus(folder);
        if (status || status.error() != ENOENT) break;
        folder = parentPath(folder);
    }
    return folder;
}

// Why nothing can have been taken from there; empty when something can.
std::string reasonAgainst(const SafetyPolicy& policy, const std::string& path, const std::string& realPath) {
    for (const std::string* each : {&path, &realPath}) {
        const auto verdict = policy.check(*each);
        if (const auto* blocked = std::get_if<SafetyPolicy::Blocked>(&verdict)) return blocked->reason;
        if (path == realPath) break;
    }
    return "";
}

} // namespace

std::string realFolderPath(const std::string& path) {
    const auto place = Place::open(joinPath(path, "x"));
    return place ? parentPath(place->realPath()) : path;
}

Result<RestoreDestination> RestoreDestination::open(const Paths& paths, const SafetyPolicy& policy,
                                                    const std::string& originalPath) {
    const auto refused = [&](const std::string& reason) {
        return failed(QuarantineError::unsafePlace(originalPath, reason));
    };
    if (!isPlain(originalPath)) return refused(noPlainPath);
    const std::string folder = lowestExistingFolder(originalPath);
    const std::string rest = originalPath.substr(folder == "/" ? 0 : folder.size());
    std::vector<std::string> below = splitOmittingEmpty(rest, '/');
    auto anchor = Place::open(joinPath(folder, below.front()));
    if (!anchor) return failed(std::move(anchor.error()));
    const std::string realFolder = parentPath(anchor->realPath());
    const std::string realPath = joinPath(realFolder, rest);
    if (isAtOrUnder(realPath, realFolderPath(paths.supportDir()))) return refused(insideOwnFolder);
    const std::string realHome = realFolderPath(paths.home());
    const bool staysAtHome = isAtOrUnder(realFolder, realHome);
    if (realFolder != folder && !staysAtHome) return refused(throughLink);
    const std::string spelled =
        staysAtHome ? joinPath(paths.home(), realPath.substr(realHome.size())) : realPath;
    if (const std::string reason = reasonAgainst(policy, originalPath, spelled); !reason.empty())
        return refused(fmt::format(neverTaken, reason));
    below.erase(below.begin());
    return RestoreDestination(std::move(*anchor), std::move(below));
}

bool RestoreDestination::isTaken() const {
    return below_.empty() && anchor_.status();
}

Result<Place> RestoreDestination::make() const {
    Place place = anchor_;
    for (const std::string& name : below_) {
        auto inner = place.below(name, Place::Missing::create);
        if (!inner) return inner;
        place = std::move(*inner);
    }
    return place;
}

} // namespace loftmere
