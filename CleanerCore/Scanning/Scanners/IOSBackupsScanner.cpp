#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Platform/RegularFile.h"
#include "CleanerCore/Platform/System.h"
#include "CleanerCore/Scanning/ScannerRegistry.h"
#include "CleanerCore/Scanning/Scanners/ForeignText.h"
#include "CleanerCore/Support/Date.h"
#include "CleanerCore/Support/PathText.h"
#include "CleanerCore/Support/PropertyList.h"

#include <fmt/format.h>

#include <span>

namespace loftmere {

namespace {

// The content of the backup's own "Info.plist"; empty when it cannot be read. Only a regular file is read.
std::string infoIn(const std::string& folder) {
    const auto file = RegularFile::open(joinPath(folder, "Info.plist"));
    const auto size = static_cast<size_t>(file ? file->size() : 0);
    if (size == 0 || size > PropertyList::largest) return {};
    std::string content(size, '\0');
    content.resize(file->read(0, std::as_writable_bytes(std::span(content))).value_or(0));
    return content;
}

// Proposes each backup of a phone or tablet, with the device's name and the date of the backup.
class IOSBackupsScanner : public JunkScanner {
public:
    CleanCategory category() const override { return CleanCategory::iosBackups; }

    Result<std::vector<ScanItem>> scan(const ScanContext& context) const override {
        const std::string root = context.lib("Application Support/MobileSync/Backup");
        std::vector<ScanItem> items;
        for (const DirectoryEntry& entry : FS::entries(root)) {
            if (context.isCancelled()) break;
            if (entry.type == FileType::directory) consider(joinPath(root, entry.name), context, items);
        }
        return items;
    }

private:
    void consider(const std::string& folder, const ScanContext& context, std::vector<ScanItem>& items) const {
        const auto folderDate = FS::modificationDate(folder);
        const auto info = ForeignText::backupInfo(infoIn(folder));
        const auto date = info.lastBackup ? info.lastBackup : folderDate;
        const std::string dateText = date ? DateText::medium(*date, userLocale()) : "unknown date";
        const PathFinding finding{
            .category = category(),
            .risk = Risk::caution,
            .reason = fmt::format("Device backup from {}. Keep at least one recent backup.", dateText)};
        context.report(category(), folder);
        finding.propose(context, folder, items,
                        "Backup: " + info.deviceName.value_or(lastPathComponent(folder)));
    }
};

} // namespace

ScannerRegistry::Scanner ScannerRegistry::makeIOSBackupsScanner() {
    return std::make_unique<IOSBackupsScanner>();
}

} // namespace loftmere
