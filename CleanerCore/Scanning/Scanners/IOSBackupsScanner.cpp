#include "CleanerCore/Scanning/Scanners/IOSBackupsScanner.h"

#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Platform/RegularFile.h"
#include "CleanerCore/Platform/User.h"
#include "CleanerCore/Scanning/Scanners/PathFinding.h"
#include "CleanerCore/Support/DateText.h"
#include "CleanerCore/Support/PathText.h"
#include "CleanerCore/Support/PropertyList.h"
#include "CleanerCore/Support/PropertyListLimits.h"

#include <fmt/format.h>

#include <span>

namespace loftmere {

namespace {

// What is known of a backup.
struct Backup {
    std::string name;
    std::optional<Date> date;
};

// What the backup says of itself; empty when it cannot be read. Whatever bears the name may stand there.
std::string infoOf(const std::string& folder) {
    const auto file = RegularFile::open(joinPath(folder, "Info.plist"));
    const auto size = static_cast<size_t>(file ? file->size() : 0);
    if (size == 0 || size > PropertyListLimits::bytes) return {};
    std::string content(size, '\0');
    content.resize(file->read(0, std::as_writable_bytes(std::span(content))).value_or(0));
    return content;
}

Backup describe(const std::string& folder) {
    Backup backup{.name = lastPathComponent(folder), .date = FS::modificationDate(folder)};
    const auto info = PropertyList::parse(infoOf(folder));
    if (!info) return backup;
    const auto* name = info->at<std::string>("Device Name");
    if (name == nullptr) name = info->at<std::string>("Display Name");
    if (name != nullptr) backup.name = *name;
    if (const auto* date = info->at<Date>("Last Backup Date")) backup.date = *date;
    return backup;
}

} // namespace

Result<std::vector<ScanItem>> IOSBackupsScanner::scan(const ScanContext& context) const {
    const std::string root = context.lib("Application Support/MobileSync/Backup");
    std::vector<ScanItem> items;
    for (const DirectoryEntry& entry : FS::entries(root)) {
        if (context.isCancelled()) break;
        if (entry.type != FileType::directory) continue;
        const std::string folder = joinPath(root, entry.name);
        const Backup backup = describe(folder);
        const std::string date = backup.date ? DateText::medium(*backup.date, userLocale()) : "unknown date";
        const PathFinding finding{
            .category = category(),
            .risk = Risk::caution,
            .reason = fmt::format("Device backup from {}. Keep at least one recent backup.", date)};
        context.report(category(), folder);
        if (auto item = finding.propose(context, folder, "Backup: " + backup.name)) items.push_back(*item);
    }
    return items;
}

} // namespace loftmere
