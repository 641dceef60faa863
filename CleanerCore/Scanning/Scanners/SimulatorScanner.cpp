#include "CleanerCore/Scanning/Scanners/SimulatorScanner.h"

#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Process/Shell.h"
#include "CleanerCore/Scanning/Scanners/PathFinding.h"
#include "CleanerCore/Support/ByteSum.h"
#include "CleanerCore/Support/NumericOrder.h"
#include "CleanerCore/Support/PathText.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <set>
#include <string_view>

namespace loftmere {

namespace {

using namespace std::string_view_literals;

using Items = std::vector<ScanItem>;

constexpr std::array deviceSupport{
    "iOS DeviceSupport",
    "watchOS DeviceSupport",
    "tvOS DeviceSupport",
    "visionOS DeviceSupport",
};

// The names of the real folders in a folder, the highest version first.
std::vector<std::string> versionsIn(const std::string& folder) {
    std::vector<std::string> names;
    for (DirectoryEntry& entry : FS::entries(folder)) {
        if (entry.type == FileType::directory) names.push_back(std::move(entry.name));
    }
    std::ranges::stable_sort(names,
                             [](const auto& a, const auto& b) { return compareNumerically(a, b) > 0; });
    return names;
}

void findDeviceSupport(const ScanContext& context, const std::string& folder, Items& items) {
    const PathFinding symbols{
        .category = CleanCategory::simulators,
        .risk = Risk::review,
        .reason = "Symbols for an older OS version; re-copied if you connect that device again"};
    const std::vector<std::string> versions = versionsIn(folder);
    for (size_t i = 1; i < versions.size() && !context.isCancelled(); ++i) { // the newest is kept
        const std::string path = joinPath(folder, versions[i]);
        context.report(symbols.category, path);
        if (FS::exists(path)) symbols.propose(context, path, items);
    }
}

void findCaches(const ScanContext& context, Items& items) {
    const PathFinding caches{.category = CleanCategory::simulators,
                             .risk = Risk::safe,
                             .reason = "Simulator dyld caches; rebuilt on boot"};
    const std::string path = context.lib("Developer/CoreSimulator/Caches");
    if (!FS::exists(path)) return;
    if (auto item = caches.propose(context, path, "Simulator caches")) items.push_back(*item);
}

// The identifiers in what the developer tools print; none when it is anything else.
std::vector<std::string> deviceIdentifiers(const std::string& output) {
    std::vector<std::string> identifiers;
    const auto answer = parseJson(output);
    if (!answer || !answer->is_object()) return identifiers;
    const auto runtimes = answer->find("devices");
    if (runtimes == answer->end() || !runtimes->is_object()) return identifiers;
    for (const Json& devices : *runtimes) {
        if (!devices.is_array()) continue;
        for (const Json& device : devices) {
            const auto udid = device.is_object() ? device.find("udid") : device.end();
            if (udid != device.end() && udid->is_string()) identifiers.push_back(udid->get<std::string>());
        }
    }
    return identifiers;
}

// Names one folder inside of another: what a tool prints must lead nowhere else.
bool isPlainName(std::string_view name) {
    return !name.empty() && name != "." && name != ".." && name.find_first_of("/\0"sv) == name.npos;
}

// What the simulators take on disk, each told of once.
int64_t sizeOf(const ScanContext& context, const std::vector<std::string>& identifiers) {
    const std::string devices = context.lib("Developer/CoreSimulator/Devices");
    int64_t size = 0;
    for (const std::string& identifier : std::set(identifiers.begin(), identifiers.end())) {
        if (context.isCancelled()) break;
        if (!isPlainName(identifier)) continue;
        addBytes(size, FS::allocatedSize(joinPath(devices, identifier), context.isCancelled));
    }
    return size;
}

} // namespace

Result<std::vector<ScanItem>> SimulatorScanner::scan(const ScanContext& context) const {
    Items items;
    for (const char* folder : deviceSupport) {
        findDeviceSupport(context, joinPath(context.lib("Developer/Xcode"), folder), items);
    }
    findCaches(context, items);
    for (ScanItem& item : unavailableSimulators(context)) items.push_back(std::move(item));
    return items;
}

std::vector<ScanItem> SimulatorScanner::unavailableSimulators(const ScanContext& context) const {
    if (!Shell::which("xcrun")) return {};
    const auto answer = Shell::run("xcrun", {"simctl", "list", "devices", "unavailable", "-j"}, toolLimit_,
                                   {}, context.isCancelled);
    if (!answer.ok()) return {};
    const std::vector<std::string> identifiers = deviceIdentifiers(answer.out);
    if (identifiers.empty()) return {};
    const int64_t size = sizeOf(context, identifiers);
    if (context.isCancelled()) return {}; // a part of the size would be a wrong one
    return {ScanItem::make(
        {.title = fmt::format("{} unavailable simulator(s)", identifiers.size()),
         .target = CommandTarget{{.executable = "xcrun", .arguments = {"simctl", "delete", "unavailable"}}},
         .size = size,
         .category = category(),
         .risk = Risk::safe,
         .reason = "Simulators for runtimes that are no longer installed"})};
}

} // namespace loftmere
