#pragma once

#include "CleanerCore/Scanning/Duplicates/ListedFile.h"
#include "CleanerCore/Scanning/JunkScanner.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace loftmere {

// Finds byte-identical files in the user's own folders, chooses one of each set to keep and proposes all
// others.
class DuplicateScanner : public JunkScanner {
public:
    // Folders to walk, absolute, with a leading "~" or relative to the home folder. Absent: the default list.
    // Empty: none at all.
    std::optional<std::vector<std::string>> roots;
    int64_t minBytes = 524288; // the smallest file considered, logical bytes

    CleanCategory category() const override { return CleanCategory::duplicates; }

    // Largest files first. Cancelled, it answers the sets that are proved by then. A file that cannot be
    // read, vanishes or changes meanwhile is left out, and never costs the others; so is one that claims more
    // than its disk can hold.
    Result<std::vector<ScanItem>> scan(const ScanContext& context) const override;

    // Every file that may take part, in the order of the walk: without hidden entries, links, what lies in
    // packages and in folders of tools. No folder is walked twice, even where roots overlap. Any thread.
    std::vector<ListedFile> files(const ScanContext& context) const;

    // Of paths with the same content, which are not empty, the one to keep: rather outside Downloads and
    // Desktop and without the mark of a second copy in its name, then with the shorter path, then the older,
    // then the earlier in the list. Any thread.
    static std::string chooseKeeper(const std::vector<std::string>& urls, std::string_view home);
};

} // namespace loftmere
