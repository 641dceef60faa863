#pragma once

#include "CleanerCore/Files/Paths.h"
#include "CleanerCore/Records/AppConfig.h"
#include "CleanerCore/Records/ScanItem.h"
#include "CleanerCore/Support/Date.h"
#include "CleanerCore/Support/Result.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace loftmere {

// What every scanner of one scan gets. All of them share it, read-only.
struct ScanContext {
    Paths paths;
    AppConfig config;
    Date now; // one moment for the whole scan

    // Both may be called from any thread at any time. `report` takes the path or text being worked on. It is
    // thinned out later, so a scanner may call it for every path that it looks at.
    std::function<bool()> isCancelled;
    std::function<void(CleanCategory, const std::string&)> report;

    Date daysAgo(int64_t days) const;
    const std::string& home() const { return paths.home(); }
    std::string homeURL(std::string_view relative) const; // `relative` below the home folder
    std::string lib(std::string_view relative) const { return paths.lib(relative); }

    // Changed less than `config.minItemAgeHours` before `now`, or in the future. False without a date.
    bool isFresh(const std::string& path) const;
};

// Finds what could be removed in one category. A scanner holds no state, never writes, never waits for the
// main thread, and asks `context.isCancelled` between units of work. When cancelled, it returns what it has
// found so far.
class JunkScanner {
public:
    virtual ~JunkScanner() = default;

    virtual CleanCategory category() const = 0;

    // Called on a worker thread. A failure costs only this category, and its sentence is shown as the reason.
    virtual Result<std::vector<ScanItem>> scan(const ScanContext& context) const = 0;
};

// What a scanner says about paths that it proposes for the same reason.
struct PathFinding {
    CleanCategory category;
    Risk risk;
    std::string reason;
    int64_t minimum = 1; // allocated bytes; a smaller path is not worth proposing

    // Adds an item for the path to `items`, unless the path is fresh or too small. Without a title, the
    // path's last component is the title.
    void propose(const ScanContext& context, const std::string& path, std::vector<ScanItem>& items,
                 std::optional<std::string> title = std::nullopt) const;
};

} // namespace loftmere
