#pragma once

#include "CleanerCore/Records/CleanCategory.h"
#include "CleanerCore/Support/Date.h"
#include "CleanerCore/Support/Json.h"

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace loftmere {

// How much thought a removal deserves. Ordered: `safe` is lower than `caution`.
enum class Risk { safe, review, caution };

struct RiskTraits {
    Risk value;
    int rawValue;
    const char* label;
};

template <>
inline constexpr auto tableOf<Risk> = std::to_array<RiskTraits>({
    {Risk::safe, 0, "Safe"},
    {Risk::review, 1, "Review"},
    {Risk::caution, 2, "Caution"},
});
static_assert(isComplete<Risk>());

// A tool and its arguments, run without a shell.
struct CommandSpec {
    std::string executable; // a name that Shell looks up, or an absolute path
    std::vector<std::string> arguments;

    // Executable and arguments joined with single blanks, with no quoting.
    std::string display() const;

    bool operator==(const CommandSpec&) const = default;
};

// A path that the user may remove.
struct PathTarget {
    std::string path;
    bool operator==(const PathTarget&) const = default;
};

// A tool run that frees space.
struct CommandTarget {
    CommandSpec command;
    bool operator==(const CommandTarget&) const = default;
};

// A path that needs administrator rights.
struct AdminPathTarget {
    std::string path;
    bool operator==(const AdminPathTarget&) const = default;
};

// The local copy of a synced file, to be released. The cloud keeps the file.
struct EvictTarget {
    std::string path;
    bool operator==(const EvictTarget&) const = default;
};

// What is acted on, and how.
using ItemTarget = std::variant<PathTarget, CommandTarget, AdminPathTarget, EvictTarget>;

// What a scanner says about a finding. ScanItem::make gives it an identity.
struct ItemDescription {
    std::optional<std::string> title = std::nullopt; // absent: the path's last component, or the command line
    ItemTarget target = {};
    int64_t size = 0;
    CleanCategory category = CleanCategory::userCaches;
    Risk risk = Risk::safe;
    std::string reason = {};
    std::optional<Date> lastUsed = std::nullopt;
};

// One proposed removal.
struct ScanItem {
    std::string id; // derived from the target, so a thing that is found again has the same id
    std::string title;
    ItemTarget target = {};
    int64_t size = 0; // allocated bytes, or an estimate for commands
    CleanCategory category = CleanCategory::userCaches;
    Risk risk = Risk::safe;
    std::string reason;           // the sentence that explains the finding
    std::optional<Date> lastUsed; // absent when unknown

    static ScanItem make(ItemDescription description);

    // The path of a `path` or `adminPath` target, else null.
    const std::string* path() const;

    // The path of any target but a command's, else null.
    const std::string* anyPath() const;

    bool operator==(const ScanItem&) const = default;
};

// What a scan found in one category.
struct CategoryResult {
    CleanCategory category = CleanCategory::userCaches;
    std::vector<ScanItem> items = {};
    std::optional<std::string> error = std::nullopt; // why the category could not be scanned

    // The sum of the items' sizes.
    int64_t totalSize() const;

    bool operator==(const CategoryResult&) const = default;
};

LOFTMERE_JSON_CODEC(CommandSpec);
LOFTMERE_JSON_CODEC(ItemTarget);
LOFTMERE_JSON_CODEC(ScanItem); // `id` is kept as stored, not derived again

} // namespace loftmere
