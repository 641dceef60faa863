#pragma once

#include "CleanerCore/Files/Paths.h"
#include "CleanerCore/Records/AppConfig.h"
#include "CleanerCore/Records/ScanItem.h"
#include "CleanerCore/Scanning/ScannerRegistry.h"

#include <functional>
#include <set>
#include <string>
#include <vector>

namespace loftmere {

class SafetyPolicy;

// Turns a set of categories into findings. Made for one job with copies of `paths` and `config`.
class ScanEngine {
public:
    using CancelCheck = std::function<bool()>;
    using Progress = std::function<void(CleanCategory)>;
    using StatusText = std::function<void(CleanCategory, const std::string&)>;

    ScanEngine(Paths paths, AppConfig config);

    // Runs the scanners of all categories side by side and blocks until they have ended: never on the main
    // thread. `progress` is told of each category that has finished, `status` what is being looked at, at
    // most every 0.09 seconds; both are called on worker threads. A scanner that fails costs only its
    // category, whose result then carries the failure's sentence. Categories without a scanner give no
    // result. What comes back has been through `dedupe`.
    std::vector<CategoryResult> scan(const std::set<CleanCategory>& categories,
                                     const CancelCheck& isCancelled = nullptr,
                                     const Progress& progress = nullptr,
                                     const StatusText& status = nullptr) const;

    // The same with scanners of the caller's.
    std::vector<CategoryResult> scan(const ScannerRegistry::Scanners& scanners,
                                     const CancelCheck& isCancelled = nullptr,
                                     const Progress& progress = nullptr,
                                     const StatusText& status = nullptr) const;

    // Merges what scanners found side by side: a path found twice goes to the category of the higher rank
    // (the first one, where ranks are equal), what lies below a proposed folder is left out, and so is what
    // the policy blocks. Commands and evictions are never touched. Items come back by falling size, results
    // in the declared order of the categories; a result may end up empty. Linear but for the sorting. Any
    // thread.
    static std::vector<CategoryResult> dedupe(std::vector<CategoryResult> results,
                                              const SafetyPolicy& policy);

private:
    Paths paths_;
    AppConfig config_;
};

} // namespace loftmere
