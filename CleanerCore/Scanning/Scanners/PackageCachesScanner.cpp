#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Scanning/ScannerRegistry.h"

#include <array>

namespace loftmere {

namespace {

struct Cache {
    const char* path; // below the home folder
    const char* title;
    Risk risk;
};

using enum Risk;

// clang-format off
constexpr std::array caches{
    Cache{".npm/_cacache",                    "npm cache",                     safe},
    Cache{"Library/Caches/Yarn",              "Yarn cache",                    safe},
    Cache{".yarn/berry/cache",                "Yarn Berry cache",              safe},
    Cache{"Library/pnpm/store",               "pnpm store",                    safe},
    Cache{".pnpm-store",                      "pnpm store",                    safe},
    Cache{".bun/install/cache",               "Bun cache",                     safe},
    Cache{"Library/Caches/pnpm",              "pnpm cache",                    safe},
    Cache{"Library/Caches/pip",               "pip cache",                     safe},
    Cache{".cache/pip",                       "pip cache",                     safe},
    Cache{"Library/Caches/pypoetry",          "Poetry cache",                  safe},
    Cache{".cache/uv",                        "uv cache",                      safe},
    Cache{"Library/Caches/Homebrew",          "Homebrew downloads",            safe},
    Cache{"Library/Caches/CocoaPods",         "CocoaPods cache",               safe},
    Cache{"Library/Caches/org.swift.swiftpm", "SwiftPM cache",                 safe},
    Cache{".cargo/registry/cache",            "Cargo crate cache",             safe},
    Cache{".cargo/git/checkouts",             "Cargo git checkouts",           safe},
    Cache{"go/pkg/mod/cache/download",        "Go module download cache",      safe},
    Cache{"Library/Caches/go-build",          "Go build cache",                safe},
    Cache{".gradle/caches",                   "Gradle caches",                 safe},
    Cache{".gradle/wrapper/dists",            "Gradle wrapper distributions",  review},
    Cache{".m2/repository",                   "Maven repository",              review},
    Cache{"Library/Caches/ms-playwright",     "Playwright browsers",           review},
    Cache{".cache/huggingface",               "Hugging Face models/datasets",  caution},
    Cache{"Library/Caches/JetBrains",         "JetBrains IDE caches",          safe},
    Cache{".android/cache",                   "Android SDK cache",             safe},
    Cache{".expo",                            "Expo cache",                    review},
};
// clang-format on

// Proposes what the developers' package managers have downloaded and can download again.
class PackageCachesScanner : public JunkScanner {
public:
    CleanCategory category() const override { return CleanCategory::packageCaches; }

    Result<std::vector<ScanItem>> scan(const ScanContext& context) const override {
        std::vector<ScanItem> items;
        for (const Cache& cache : caches) {
            if (context.isCancelled()) continue;
            const std::string path = context.homeURL(cache.path);
            context.report(category(), path);
            if (!FS::exists(path)) continue;
            const PathFinding finding{.category = category(),
                                      .risk = cache.risk,
                                      .reason = cache.risk == safe
                                                    ? "Re-downloaded on demand by the tool"
                                                    : "Re-downloadable, but may be large to fetch again",
                                      .minimum = 1048576};
            finding.propose(context, path, items, cache.title);
        }
        return items;
    }
};

} // namespace

ScannerRegistry::Scanner ScannerRegistry::makePackageCachesScanner() {
    return std::make_unique<PackageCachesScanner>();
}

} // namespace loftmere
