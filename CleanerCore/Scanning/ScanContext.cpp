#include "CleanerCore/Scanning/ScanContext.h"

#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Support/PathText.h"

namespace loftmere {

Date ScanContext::daysAgo(int64_t days) const {
    return addSeconds(now, -86400.0 * static_cast<double>(days));
}

std::string ScanContext::homeURL(std::string_view relative) const {
    return joinPath(paths.home(), relative);
}

bool ScanContext::isFresh(const std::string& path) const {
    const auto modified = FS::modificationDate(path);
    return modified && secondsBetween(*modified, now) < 3600.0 * static_cast<double>(config.minItemAgeHours);
}

} // namespace loftmere
