#pragma once

#include "CleanerCore/Files/Paths.h"
#include "CleanerCore/Records/AppConfig.h"
#include "CleanerCore/Records/ScanItem.h"
#include "CleanerCore/Scanning/ScannerRegistry.h"
#include "CleanerCore/Support/Date.h"

#include <functional>
#include <mutex>
#include <set>
#include <string>
#include <vector>

namespace loftmere {

class SafetyPolicy;

// Lets a call through at most once in `interval` seconds. Any thread.
class Throttle {
public:
    explicit Throttle(double interval) : interval_(interval) {}

    bool allow();

private:
    double interval_;
    std::mutex lock_;
    Date last_ = distantPast;
};

// Turns a set of categories into findings. Made for one scan with copies of `paths` and `config`.
class ScanEngine {
public:
    // The least time between two status texts, in seconds.
    static constexpr double statusInterval = 0.09;

    using CancelCheck = std::function<bool()>;
    using Progress = std::function<void(CleanCategory)>;
    using StatusText = std::function<void(CleanCategory, const std::string&)>;

    ScanEngine(Paths paths, AppConfig config);

    // Runs the scanners of all categories side by side and blocks until they have ended, so it must not run
    // on the main thread. `progress` gets each category that has finished. `status` gets the path or text
    // being worked on, at most one in each `statusInterval`. Both are called on worker threads. A scanner
    // that fails costs only its category, whose result then has the failure's sentence. Categories without a
    // scanner give no result. The results have been through `dedupe`.
    std::vector<CategoryResult> scan(const std::set<CleanCategory>& categories,
                                     const CancelCheck& isCancelled = nullptr,
                                     const Progress& progress = nullptr,
                                     const StatusText& status = nullptr) const;

    // The same with the caller's own scanners.
    std::vector<CategoryResult> scan(const ScannerRegistry::Scanners& scanners,
                                     const CancelCheck& isCancelled = nullptr,
                                     const Progress& progress = nullptr,
                                     const StatusText& status = nullptr) const;

    // Merges what scanners have found side by side. A path found twice goes to the category with the higher
    // owner rank, or to the first one where ranks are equal. Paths below a proposed folder are left out, and
    // so are paths that the policy blocks. Commands and evictions are never left out. Items are sorted by
    // falling size, results in the declared order of the categories, and a result may end up empty. Linear
    // except for the sorting. Any thread.
    static std::vector<CategoryResult> dedupe(std::vector<CategoryResult> results,
                                              const SafetyPolicy& policy);

private:
    Paths paths_;
    AppConfig config_;
};

} // namespace loftmere
