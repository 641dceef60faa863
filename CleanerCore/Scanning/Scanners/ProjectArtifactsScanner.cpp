#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Safety/SafetyPolicy.h"
#include "CleanerCore/Scanning/ScannerRegistry.h"
#include "CleanerCore/Scanning/Scanners/ListingAhead.h"
#include "CleanerCore/Scanning/Scanners/ProjectArtifacts.h"
#include "CleanerCore/Support/PathText.h"

#include <fmt/format.h>

#include <algorithm>
#include <unordered_set>
#include <utility>

namespace loftmere {

namespace {

using ProjectArtifacts::Kind;
using ProjectArtifacts::Names;
using Entries = std::vector<DirectoryEntry>;

constexpr int deepestPushedFrom = 6; // so folders down to depth 7 are listed
constexpr size_t entriesOfEachFolder = 200;
constexpr size_t entriesBetweenQuestions = 2000;

const Names& artifactNames() {
    static const Names names = [] {
        Names all;
        for (const Kind& kind : ProjectArtifacts::kinds) all.insert(kind.folder);
        return all;
    }();
    return names;
}

// A folder with an artifact's name hides what is below it, whether it is proved to be one or not.
bool isEntered(const DirectoryEntry& entry, int depth) {
    const auto& never = ProjectArtifacts::neverDescend;
    return depth <= deepestPushedFrom && !artifactNames().contains(entry.name) &&
           std::ranges::find(never, entry.name) == never.end() && pathExtension(entry.name) != "app";
}

// The first kind of artifact that the folder `name` in `project` is proved to be, null when it is none.
const Kind* kindOf(const std::string& project, const std::string& name, const Entries& siblings) {
    for (const Kind& kind : ProjectArtifacts::kinds) {
        if (kind.folder != name) continue;
        const bool holds = kind.insideArtifact ? FS::exists(joinPath(joinPath(project, name), kind.marker))
                                               : std::ranges::find(siblings, kind.marker,
                                                                   &DirectoryEntry::name) != siblings.end();
        if (holds) return &kind;
    }
    return nullptr;
}

// One walk through all roots.
class Walk {
public:
    Walk(const ScanContext& context, CleanCategory category)
        : context_(context),
          category_(category),
          cutoff_(context.daysAgo(context.config.staleProjectDays)),
          folders_(ProjectArtifacts::roots(context), isEntered, context.isCancelled) {}

    std::vector<ScanItem> run() {
        while (!context_.isCancelled()) {
            const auto folder = folders_.next();
            if (!folder) break;
            context_.report(category_, folder->path);
            look(*folder);
        }
        return std::move(items_);
    }

private:
    void look(const ListingAhead::Folder& folder) {
        activity_.reset();
        for (const DirectoryEntry& entry : folder.entries) {
            if (entry.type != FileType::directory || !artifactNames().contains(entry.name)) continue;
            const Kind* kind = kindOf(folder.path, entry.name, folder.entries);
            if (kind != nullptr) handle(folder.path, joinPath(folder.path, entry.name), *kind);
        }
    }

    void handle(const std::string& project, const std::string& artifact, const Kind& kind) {
        if (!handled_.insert(artifact).second) return;
        const auto activity = activityOf(project);
        // A reading that was cancelled may have missed the newest work, so it decides nothing.
        if (!activity || *activity >= cutoff_ || context_.isCancelled()) return;
        const std::string name = lastPathComponent(project);
        const auto days = static_cast<int64_t>(secondsBetween(*activity, context_.now) / 86400);
        context_.report(category_, artifact);
        if (!FS::exists(artifact)) return;
        const PathFinding finding{
            .category = category_,
            .risk = Risk::safe,
            .reason = fmt::format("{} untouched for {} days. Restore with: {}", name, days, kind.restore),
            .minimum = 1048576};
        finding.propose(context_, artifact, items_, name + "/" + lastPathComponent(artifact));
    }

    // Read once for all artifacts in the current folder.
    std::optional<Date> activityOf(const std::string& project) {
        if (!activity_) {
            activity_ = ProjectArtifacts::projectActivity(project, artifactNames(), context_.isCancelled);
        }
        return *activity_;
    }

    const ScanContext& context_;
    CleanCategory category_;
    Date cutoff_;
    ListingAhead folders_;
    std::unordered_set<std::string> handled_;
    std::optional<std::optional<Date>> activity_; // of the current folder, once it is read
    std::vector<ScanItem> items_;
};

// Keeps the newest of many dates.
class Newest {
public:
    explicit Newest(const std::function<bool()>& cancel) : cancel_(cancel) {}

    // False when there is no need to look further.
    bool look(const std::string& path) {
        newest_ = std::max(newest_, FS::modificationDate(path));
        return ++seen_ % entriesBetweenQuestions != 0 || !cancel_ || !cancel_();
    }
    std::optional<Date> date() const { return newest_; }

private:
    const std::function<bool()>& cancel_;
    size_t seen_ = 0;
    std::optional<Date> newest_;
};

bool lookInto(const std::string& folder, Newest& newest) {
    Entries entries = FS::entries(folder);
    entries.resize(std::min(entries.size(), entriesOfEachFolder));
    return std::ranges::all_of(
        entries, [&](const DirectoryEntry& entry) { return newest.look(joinPath(folder, entry.name)); });
}

// Proposes what the tools of software projects make and can make again (dependencies, build output, virtual
// environments) in projects that nobody has worked on for `staleProjectDays` days.
class ProjectArtifactsScanner : public JunkScanner {
public:
    CleanCategory category() const override { return CleanCategory::projectArtifacts; }

    Result<std::vector<ScanItem>> scan(const ScanContext& context) const override {
        return Walk(context, category()).run();
    }
};

} // namespace

ScannerRegistry::Scanner ScannerRegistry::makeProjectArtifactsScanner() {
    return std::make_unique<ProjectArtifactsScanner>();
}

std::vector<std::string> ProjectArtifacts::roots(const ScanContext& context) {
    std::vector<std::string> paths;
    for (const std::string& root : context.config.developerRoots) {
        paths.push_back(SafetyPolicy::normalize(root, context.home()));
    }
    if (paths.empty()) {
        for (const std::string_view root : usualRoots) paths.push_back(context.homeURL(root));
    }
    // By identity, since on many disks "code" and "Code" are one folder.
    std::set<std::pair<uint64_t, uint64_t>> seen;
    std::erase_if(paths, [&](const std::string& path) {
        const auto status = linkStatus(path);
        if (!status || status->type != FileType::directory) return true;
        return !seen.emplace(status->device, status->inode).second;
    });
    return paths;
}

std::optional<Date> ProjectArtifacts::projectActivity(const std::string& folder, const Names& excluding,
                                                      const std::function<bool()>& cancel) {
    Newest newest(cancel);
    for (const DirectoryEntry& entry : FS::entries(folder)) {
        if (excluding.contains(entry.name)) continue;
        const std::string path = joinPath(folder, entry.name);
        if (!newest.look(path)) return newest.date();
        const bool isOpened = entry.type == FileType::directory && entry.name != ".git";
        if (isOpened && !lookInto(path, newest)) return newest.date();
    }
    for (const char* file : {".git/index", ".git/HEAD", ".git/FETCH_HEAD"})
        newest.look(joinPath(folder, file));
    return newest.date();
}

} // namespace loftmere
