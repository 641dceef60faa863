#include "CleanerCore/Scanning/Scanners/CrashReportsScanner.h"

#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Scanning/Scanners/PathFinding.h"

namespace loftmere {

Result<std::vector<ScanItem>> CrashReportsScanner::scan(const ScanContext& context) const {
    const PathFinding crashReport{.category = category(),
                                  .risk = Risk::safe,
                                  .reason = "Crash/diagnostic report already sent (or never needed)"};
    std::vector<ScanItem> items;
    for (const std::string& child : FS::children(context.lib("Logs/DiagnosticReports"))) {
        if (context.isCancelled()) break;
        context.report(category(), child);
        crashReport.propose(context, child, items);
    }
    return items;
}

} // namespace loftmere
