#include "CleanerCore/Scanning/Scanners/InstallersScanner.h"

#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Scanning/Scanners/PathFinding.h"
#include "CleanerCore/Support/PathText.h"
#include "CleanerCore/Support/Text.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace loftmere {

namespace {

constexpr std::array<std::string_view, 4> installerExtensions{"dmg", "pkg", "mpkg", "iso"};

bool isInstaller(const std::string& path) {
    const std::string extension = asciiLowercased(pathExtension(path));
    return std::ranges::find(installerExtensions, extension) != installerExtensions.end();
}

} // namespace

Result<std::vector<ScanItem>> InstallersScanner::scan(const ScanContext& context) const {
    const PathFinding installer{.category = category(),
                                .risk = Risk::review,
                                .reason =
                                    "Installer disk image or package; the app is usually already installed"};
    std::vector<ScanItem> items;
    for (const char* folder : {"Downloads", "Desktop"}) {
        for (const std::string& child : FS::children(context.homeURL(folder))) {
            if (context.isCancelled()) break;
            context.report(category(), child);
            if (isInstaller(child)) installer.propose(context, child, items);
        }
    }
    return items;
}

} // namespace loftmere
