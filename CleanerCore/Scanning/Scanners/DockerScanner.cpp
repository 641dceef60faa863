#include "CleanerCore/Scanning/Scanners/DockerScanner.h"

#include "CleanerCore/Process/Shell.h"
#include "CleanerCore/Support/Text.h"

#include <nlohmann/json.hpp>

#include <array>
#include <locale>
#include <map>
#include <optional>
#include <sstream>

namespace loftmere {

namespace {

struct Reclaimable {
    const char* type; // as Docker calls it
    const char* title;
    std::array<const char*, 4> arguments; // the rest is null
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

struct Unit {
    std::string_view suffix;
    double bytes;
};

constexpr std::array units{
    Unit{"TB", 1e12}, Unit{"GB", 1e9}, Unit{"MB", 1e6}, Unit{"kB", 1e3}, Unit{"KB", 1e3}, Unit{"B", 1},
};
// clang-format on

// A whole text as a number, whatever decimal point the user's locale has.
double numberIn(std::string_view text) {
    std::istringstream stream{std::string(text)};
    stream.imbue(std::locale::classic());
    double number = 0;
    stream >> std::noskipws >> number;
    return !stream.fail() && stream.peek() == std::istringstream::traits_type::eof() ? number : 0;
}

// What each type can give back, by Docker's own lines of JSON.
std::map<std::string, int64_t> sizesIn(const std::string& output) {
    std::map<std::string, int64_t> sizes;
    for (const std::string& line : splitOmittingEmpty(output, '\n')) {
        const auto row = parseJson(line);
        if (!row || !row->is_object()) continue;
        const auto type = row->find("Type");
        const auto size = row->find("Reclaimable");
        if (type == row->end() || !type->is_string() || size == row->end() || !size->is_string()) continue;
        sizes[type->get<std::string>()] = DockerScanner::parseSize(size->get<std::string>());
    }
    return sizes;
}

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

} // namespace

Result<std::vector<ScanItem>> DockerScanner::scan(const ScanContext&) const {
    std::vector<ScanItem> items;
    if (!Shell::which("docker")) return items;
    const auto answer = Shell::run("docker", {"system", "df", "--format", "{{json .}}"}, toolLimit_);
    if (!answer.ok()) return items;
    const auto sizes = sizesIn(answer.out);
    for (const Reclaimable& row : reclaimables) {
        const auto size = sizes.find(row.type);
        if (size != sizes.end() && size->second >= 1) items.push_back(itemFor(row, size->second));
    }
    return items;
}

int64_t DockerScanner::parseSize(std::string_view text) {
    const size_t blank = text.find(' ');
    if (blank != 0) text = text.substr(0, blank);
    for (const Unit& unit : units) {
        if (!text.ends_with(unit.suffix)) continue;
        text.remove_suffix(unit.suffix.size());
        const double bytes = numberIn(text) * unit.bytes;
        // No disk holds what a 64-bit count cannot; nor is a number that is none worth a guess.
        const bool fits = bytes > -0x1p63 && bytes < 0x1p63;
        return fits ? static_cast<int64_t>(bytes) : 0;
    }
    return 0;
}

} // namespace loftmere
