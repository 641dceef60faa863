#pragma once

#include "CleanerCore/Scanning/JunkScanner.h"

#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>

namespace loftmere {

// Proposes what the tools of software projects make and can make again (dependencies, build output, virtual
// environments) in projects that nobody has worked on for `staleProjectDays` days.
class ProjectArtifactsScanner : public JunkScanner {
public:
    using Names = std::set<std::string_view>;

    CleanCategory category() const override { return CleanCategory::projectArtifacts; }
    Result<std::vector<ScanItem>> scan(const ScanContext& context) const override;

    // The real folders to look through: the user's own choice, else the usual places for code. A folder that
    // two paths lead to stands once.
    static std::vector<std::string> roots(const ScanContext& context);

    // When a project was last worked on: the newest modification date of its children but those with the
    // names `excluding`, of up to 200 entries of each folder among them, and of the files in which git notes
    // its work. Absent when no date can be read. `cancel` is asked at every 2000th entry; when it answers
    // true, the newest so far is the result.
    static std::optional<Date> projectActivity(const std::string& folder, const Names& excluding,
                                               const std::function<bool()>& cancel = nullptr);
};

} // namespace loftmere
