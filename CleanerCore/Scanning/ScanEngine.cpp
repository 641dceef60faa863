#include "CleanerCore/Scanning/ScanEngine.h"

#include "CleanerCore/Safety/SafetyPolicy.h"
#include "CleanerCore/Scanning/Throttle.h"
#include "CleanerCore/Support/Concurrent.h"

#include <fmt/format.h>

#include <exception>
#include <mutex>
#include <new>

namespace loftmere {

namespace {

// A scanner answers its failures. What a library or want of memory throws all the same must not cost the
// others their findings either.
Result<std::vector<ScanItem>> itemsOf(const JunkScanner& scanner, const ScanContext& context) {
    try {
        return scanner.scan(context);
    } catch (const std::bad_alloc&) {
        return failed(Failure::saying("There was not enough memory"));
    } catch (const std::exception& error) {
        return failed(Failure::saying(fmt::format("Something unforeseen happened: {}", error.what())));
    }
}

CategoryResult resultOf(const JunkScanner& scanner, const ScanContext& context) {
    CategoryResult result{.category = scanner.category()};
    auto items = itemsOf(scanner, context);
    if (items)
        result.items = std::move(*items);
    else
        result.error = items.error().message;
    return result;
}

} // namespace

ScanEngine::ScanEngine(Paths paths, AppConfig config)
    : paths_(std::move(paths)), config_(std::move(config)) {}

std::vector<CategoryResult> ScanEngine::scan(const std::set<CleanCategory>& categories,
                                             const CancelCheck& isCancelled, const Progress& progress,
                                             const StatusText& status) const {
    return scan(ScannerRegistry::scanners(categories), isCancelled, progress, status);
}

std::vector<CategoryResult> ScanEngine::scan(const ScannerRegistry::Scanners& scanners,
                                             const CancelCheck& isCancelled, const Progress& progress,
                                             const StatusText& status) const {
    Throttle throttle(0.09);
    const ScanContext context{
        .paths = paths_,
        .config = config_,
        .now = currentDate(),
        .isCancelled = isCancelled ? isCancelled : [] { return false; },
        .report =
            [&](CleanCategory category, const std::string& text) {
                if (status && throttle.allow()) status(category, text);
            },
    };
    std::mutex lock;
    std::vector<CategoryResult> results;
    concurrentPerform(scanners.size(), [&](size_t i) {
        CategoryResult result = resultOf(*scanners[i], context);
        if (progress) progress(result.category);
        const std::lock_guard guard(lock);
        results.push_back(std::move(result));
    });
    return dedupe(std::move(results), SafetyPolicy(paths_, config_.protectedPaths));
}

} // namespace loftmere
