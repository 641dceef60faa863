#pragma once

#include "CleanerCore/Scanning/Duplicates/ContentGroups.h"
#include "CleanerCore/Scanning/JunkScanner.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace loftmere {

// Finds byte-identical files in the user's own folders, chooses one of each set to keep and proposes the
// others.
class DuplicateScanner : public JunkScanner {
public:
    // Folders to walk: absolute, with a leading "~", or relative to the home folder. Absent means the default
    // list, empty means none.
    std::optional<std::vector<std::string>> roots;
    int64_t minBytes = 524288; // logical bytes of the smallest file considered

    CleanCategory category() const override { return CleanCategory::duplicates; }

    // Largest files first. When cancelled, the result is the sets that are proved by then. A file that cannot
    // be read, vanishes or changes meanwhile is left out and never costs the others. So is a file that claims
    // more than its disk can hold.
    Result<std::vector<ScanItem>> scan(const ScanContext& context) const override;

    // Every file that may be a copy, in the order of the walk. Hidden entries, links, packages and the
    // folders of tools are left out. No folder is walked twice, even where roots overlap. Any thread.
    std::vector<ListedFile> files(const ScanContext& context) const;

    // Of paths with the same content, at least one, the one to keep. First comes a path outside Downloads and
    // Desktop and without the mark of a second copy in its name, then the shorter path, then the older file,
    // then the earlier in the list. Any thread.
    static std::string chooseKeeper(const std::vector<std::string>& urls, std::string_view home);
};

} // namespace loftmere
