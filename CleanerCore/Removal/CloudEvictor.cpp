#include "CleanerCore/Removal/CloudEvictor.h"

#include "CleanerCore/Platform/CloudStorage.h"
#include "CleanerCore/Process/Shell.h"
#include "CleanerCore/Safety/CloudPaths.h"
#include "CleanerCore/Support/PathText.h"

#include <fmt/format.h>

#include <algorithm>

namespace loftmere::CloudEvictor {

namespace {

constexpr double toolLimit = 60; // seconds
constexpr const char* providerTool = "fileproviderctl";
constexpr const char* iCloudTool = "brctl";

Status couldNot(const std::string& detail) {
    return failed(Failure::saying("Could not remove local copy: " + detail));
}

Status evictFromProvider(const std::string& path) {
    const auto result = Shell::run(providerTool, {"evict", path}, toolLimit);
    if (result.ok()) return {};
    return couldNot(result.err.empty() ? "provider refused" : result.err);
}

Status evictFromICloud(const std::string& path) {
    const auto released = CloudStorage::evict(path);
    if (released || Shell::run(iCloudTool, {"evict", path}, toolLimit).ok()) return {};
    return couldNot(released.error().message);
}

} // namespace

Status evict(const std::string& path, const Paths& paths) {
    if (auto may = mayEvict(path, paths); !may) return may;
    return isInICloud(path, paths) ? evictFromICloud(path) : evictFromProvider(path);
}

Status mayEvict(const std::string& path, const Paths& paths) {
    const auto holdsPath = [&](const std::string& root) { return isAtOrUnder(path, root); };
    if (!std::ranges::any_of(cloudRoots(paths), holdsPath)) {
        return failed(Failure::saying("Not inside iCloud Drive or a cloud storage folder"));
    }
    if (!isInICloud(path, paths)) {
        return Shell::which(providerTool) ? Status{} : couldNot(fmt::format("{} not found", providerTool));
    }
    const auto released = CloudStorage::mayEvict();
    return released || Shell::which(iCloudTool) ? Status{} : couldNot(released.error().message);
}

} // namespace loftmere::CloudEvictor
