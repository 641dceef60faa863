#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Platform/FileStatus.h"
#include "CleanerCore/Platform/System.h"
#include "CleanerCore/Platform/Volume.h"
#include "CleanerCore/Scanning/ScannerRegistry.h"
#include "CleanerCore/Support/ByteCount.h"
#include "CleanerCore/Support/Date.h"
#include "CleanerCore/Support/PathText.h"
#include "CleanerCore/Support/Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <map>
#include <string_view>

namespace loftmere {

namespace {

constexpr std::array<std::string_view, 8> skipDirs{
    "Library", ".Trash", "node_modules", ".git", "Applications", ".docker", "Pictures", ".cache",
};

// Packages: folders that an application shows as one document.
constexpr std::array<std::string_view, 10> skipExtensions{
    "photoslibrary", "musiclibrary", "tvlibrary", "app", "fcpbundle",
    "logicx",        "sparsebundle", "vmwarevm",  "pvm", "utm",
};

constexpr int deepest = 12; // the deepest folders that are listed
constexpr size_t entriesBetweenQuestions = 2000;

bool isSkippedByName(const std::string& name) {
    const std::string extension = asciiLowercased(pathExtension(name));
    return std::ranges::find(skipDirs, name) != skipDirs.end() ||
           std::ranges::find(skipExtensions, extension) != skipExtensions.end();
}

// One walk through the home folder, which finds the large files that were not opened for long.
class Walk {
public:
    Walk(const ScanContext& context, CleanCategory category)
        : context_(context),
          category_(category),
          minimum_(minimumSize(context.config.largeFileMinMB)),
          cutoff_(context.daysAgo(context.config.largeFileAgeDays)) {
        if (const auto home = targetStatus(context.home())) homeDevice_ = home->device;
    }

    std::vector<ScanItem> run() {
        pending_.push_back({context_.home(), 0});
        while (!pending_.empty() && !context_.isCancelled()) {
            const Folder folder = std::move(pending_.back());
            pending_.pop_back();
            if (!list(folder)) break;
        }
        std::ranges::stable_sort(items_, std::ranges::greater(), &ScanItem::size);
        return std::move(items_);
    }

private:
    struct Folder {
        std::string path;
        int depth;
    };

    static int64_t minimumSize(int64_t megabytes) {
        int64_t bytes = 0;
        return __builtin_mul_overflow(megabytes, int64_t{1048576}, &bytes) ? INT64_MAX : bytes;
    }

    // False when the scan was cancelled meanwhile.
    bool list(const Folder& folder) {
        size_t seen = 0;
        for (const DirectoryEntry& entry : FS::entries(folder.path)) {
            if (++seen % entriesBetweenQuestions == 0 && context_.isCancelled()) return false;
            std::string path = joinPath(folder.path, entry.name);
            context_.report(category_, path);
            if (entry.type == FileType::symlink) continue;
            if (entry.type != FileType::directory)
                consider(path);
            else if (folder.depth < deepest && !isSkippedByName(entry.name) && isOnHomeVolume(path))
                pending_.push_back({std::move(path), folder.depth + 1});
        }
        return true;
    }

    // Folders on one device are on the same volume, so its kind is asked once for each device.
    bool isOnHomeVolume(const std::string& folder) {
        const auto status = linkStatus(folder);
        if (!status) return true;
        const auto [known, isNew] = isNearby_.try_emplace(status->device, true);
        if (isNew) {
            const VolumeKind kind = volumeKind(folder);
            known->second = kind.isLocal.value_or(true) && kind.isInternal.value_or(true);
        }
        return known->second && status->device == homeDevice_.value_or(status->device);
    }

    void consider(const std::string& path) {
        const auto status = linkStatus(path);
        if (!status || status->type == FileType::symlink || status->size < minimum_) return;
        const auto lastUsed = FS::lastUsedDate(path);
        if (!lastUsed || *lastUsed >= cutoff_) return;
        items_.push_back(ScanItem::make(
            {.target = PathTarget{path},
             .size = status->size,
             .category = category_,
             .risk = Risk::caution,
             .reason = fmt::format("{} file not opened since {}", ByteFormat::string(status->size),
                                   DateText::medium(*lastUsed, userLocale())),
             .lastUsed = lastUsed}));
    }

    const ScanContext& context_;
    CleanCategory category_;
    int64_t minimum_;
    Date cutoff_;
    std::optional<uint64_t> homeDevice_;
    std::map<uint64_t, bool> isNearby_;
    std::vector<Folder> pending_;
    std::vector<ScanItem> items_;
};

class LargeOldFilesScanner : public JunkScanner {
public:
    CleanCategory category() const override { return CleanCategory::largeOldFiles; }

    Result<std::vector<ScanItem>> scan(const ScanContext& context) const override {
        return Walk(context, category()).run();
    }
};

} // namespace

ScannerRegistry::Scanner ScannerRegistry::makeLargeOldFilesScanner() {
    return std::make_unique<LargeOldFilesScanner>();
}

} // namespace loftmere
