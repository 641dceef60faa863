#include "CleanerCore/Process/Shell.h"
#include "CleanerCore/Scanning/ScannerRegistry.h"
#include "CleanerCore/Scanning/Scanners/ForeignText.h"

#include <array>

namespace loftmere {

namespace {

struct Reclaimable {
    const char* type; // as Docker calls it
    const char* title;
    std::array<const char*, 4> arguments; // unused ones are null
    Risk risk;
    const char* reason;
};

using enum Risk;

// clang-format off
constexpr std::array reclaimables{
    Reclaimable{"Build Cache",   "Docker build cache",        {"builder", "prune", "-f"},     safe,    "Layer cache; rebuilt on next build"},
    Reclaimable{"Containers",    "Stopped Docker containers", {"container", "prune", "-f"},   review,  "Containers that are not running"},
    Reclaimable{"Images",        "Unused Docker images",      {"image", "prune", "-a", "-f"}, review,  "Images not used by any container; pulled again when needed"},
    Reclaimable{"Local Volumes", "Unused Docker volumes",     {"volume", "prune", "-f"},      caution, "Volumes may hold database data"},
};

// clang-format on

ScanItem itemFor(const Reclaimable& row, int64_t size) {
    CommandSpec command{.executable = "docker", .arguments = {}};
    for (const char* argument : row.arguments) {
        if (argument != nullptr) command.arguments.emplace_back(argument);
    }
    return ScanItem::make({.title = row.title,
                           .target = CommandTarget{std::move(command)},
                           .size = size,
                           .category = CleanCategory::docker,
                           .risk = row.risk,
                           .reason = row.reason});
}

// Proposes what Docker itself says it can reclaim, as commands of its own. Finds nothing where Docker is
// missing, stopped or does not answer.
class DockerScanner : public JunkScanner {
public:
    explicit DockerScanner(double toolLimit) : toolLimit_(toolLimit) {}

    CleanCategory category() const override { return CleanCategory::docker; }

    Result<std::vector<ScanItem>> scan(const ScanContext& context) const override {
        std::vector<ScanItem> items;
        if (!Shell::which("docker")) return items;
        const auto answer = Shell::run("docker", {"system", "df", "--format", "{{json .}}"}, toolLimit_, {},
                                       context.isCancelled);
        if (!answer.ok()) return items;
        const auto sizes = ForeignText::reclaimableSizes(answer.out);
        for (const Reclaimable& row : reclaimables) {
            const auto size = sizes.find(row.type);
            if (size != sizes.end() && size->second >= 1) items.push_back(itemFor(row, size->second));
        }
        return items;
    }

private:
    double toolLimit_;
};

} // namespace

ScannerRegistry::Scanner ScannerRegistry::makeDockerScanner(double toolLimit) {
    return std::make_unique<DockerScanner>(toolLimit);
}

} // namespace loftmere
