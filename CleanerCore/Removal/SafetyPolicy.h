#pragma once

#include "CleanerCore/Files/Paths.h"

#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace loftmere {

// The one veto over every path that anything wants to remove. A plain value; it decides and changes nothing. Any
// thread.
class SafetyPolicy {
public:
    // May be removed with the user's own rights.
    struct Allowed {
        bool operator==(const Allowed&) const = default;
    };
    // Kept in sync by a cloud provider: a removal here is one on all the user's machines.
    struct SyncedCloud {
        std::string provider; // its display name
        bool operator==(const SyncedCloud&) const = default;
    };
    // An allowed location outside the home folder that only root can change.
    struct NeedsAdmin {
        bool operator==(const NeedsAdmin&) const = default;
    };
    // Never removed. The reason is shown to the user and logged as it stands.
    struct Blocked {
        std::string reason;
        bool operator==(const Blocked&) const = default;
    };
    using Verdict = std::variant<Allowed, SyncedCloud, NeedsAdmin, Blocked>;

    // True for Allowed and NeedsAdmin.
    static bool safeForAutomation(const Verdict& verdict);

    SafetyPolicy(Paths paths, const std::vector<std::string>& userProtected);

    // Every bad input ends in a verdict; a path that does not exist is judged by its text.
    Verdict check(const std::string& path) const;

    // A leading "~" replaced by the home folder, then the path standardised, without trailing slashes.
    static std::string normalize(std::string_view path, std::string_view home);

private:
    Paths paths_;
    std::vector<std::string> userProtected_; // normalised
};

} // namespace loftmere
