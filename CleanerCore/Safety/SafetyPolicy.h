#pragma once

#include "CleanerCore/Files/Paths.h"

#include <memory>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace loftmere {

class LinkResolver;
class PathKey;
class Place;

// The one veto over every path that anything wants to remove. An immutable value, cheap to copy; it decides
// and changes nothing. Any thread.
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

    // Where the protected locations are links, what they lead to at this moment is protected with them.
    SafetyPolicy(const Paths& paths, const std::vector<std::string>& userProtected);

    // Every bad input ends in a verdict; a path that does not exist is judged by its text. Links in its
    // parents are followed anew on each call, and where they lead within the home folder is judged as well.
    Verdict check(const std::string& path) const;

    // The stricter of the verdicts on the path and on the place that was opened for it. To be asked right
    // before acting on the place: whatever happens to the path's parents meanwhile, the place stays what was
    // judged.
    Verdict check(const std::string& path, const Place& place) const;

    // A leading "~" replaced by the home folder, then the path standardised, without trailing slashes. A ".."
    // after a link goes up from where the link leads.
    static std::string normalize(std::string_view path, std::string_view home);

    // Judges many paths and resolves each of their folders once. What it has seen grows old, so it is for
    // showing findings, not for acting on them. One thread at a time.
    class Batch {
    public:
        explicit Batch(const SafetyPolicy& policy);
        ~Batch();
        Batch(const Batch&) = delete;
        Batch& operator=(const Batch&) = delete;

        Verdict check(const std::string& path);

    private:
        const SafetyPolicy& policy_;
        std::unique_ptr<LinkResolver> resolver_;
    };

private:
    struct Rules;
    struct Location;

    Verdict check(const std::string& path, LinkResolver& resolver) const;
    Verdict judge(const PathKey& path, const std::string& real, const std::string& realHome) const;
    Verdict judgeInHome(const Location& location) const;
    Verdict judgeOutside(const Location& location) const;
    Verdict judgeReal(const std::string& path, const std::string& realPath) const;

    std::shared_ptr<const Rules> rules_;
};

} // namespace loftmere
