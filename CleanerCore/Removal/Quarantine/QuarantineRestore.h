#pragma once

#include "CleanerCore/Files/Paths.h"
#include "CleanerCore/Records/CleanReport.h"
#include "CleanerCore/Removal/Quarantine/QuarantineFolder.h"
#include "CleanerCore/Removal/Quarantine/SpaceReserve.h"
#include "CleanerCore/Safety/SafetyPolicy.h"

#include <optional>
#include <set>
#include <string>
#include <vector>

namespace loftmere {

// Moves entries of one session back to where they were. Used once; the caller holds the session's lock.
class QuarantineRestore {
public:
    QuarantineRestore(const Paths& paths, const QuarantineFolder& folder, QuarantineSession session);

    // All entries, or those whose stored names are given. Fails when the manifest cannot be saved afterwards.
    Result<std::vector<CleanFailure>> run(const std::optional<std::set<std::string>>& entryIDs);

private:
    std::vector<QuarantineEntry*> chosen(const std::optional<std::set<std::string>>& entryIDs);
    void announce(const std::vector<QuarantineEntry*>& entries) const;
    Status moveBack(const QuarantineEntry& entry) const;

    const Paths& paths_;
    const QuarantineFolder& folder_;
    const SafetyPolicy policy_; // without the user's own rules
    SpaceReserve reserve_;
    QuarantineSession session_;
};

} // namespace loftmere
