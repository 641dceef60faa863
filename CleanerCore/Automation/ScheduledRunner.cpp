#include "CleanerCore/Automation/ScheduledRunner.h"

#include "CleanerCore/Support/ByteCount.h"
#include "CleanerCore/Support/Text.h"

#include <fmt/format.h>

namespace loftmere {

std::string ScheduledRunner::summarize(const CleanReport& report, bool dryRun) {
    std::vector<std::string> parts;
    const auto add = [&](int64_t bytes, const char* before, const char* after) {
        if (bytes >= 1) parts.push_back(before + ByteFormat::string(bytes) + after);
    };
    add(report.freedBytes, dryRun ? "Would free " : "Freed ", "");
    add(report.quarantinedBytes, "", " to quarantine");
    add(report.trashedBytes, "", " to Trash");
    add(report.evictedBytes, "", " offloaded to cloud");
    if (!report.failures.empty()) parts.push_back(fmt::format("{} failed", report.failures.size()));
    return parts.empty() ? "Nothing to clean" : joined(parts, ", ");
}

} // namespace loftmere
