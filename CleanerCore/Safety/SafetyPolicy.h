#pragma once

#include "CleanerCore/Files/Paths.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace loftmere {

class LinkResolver;
class PathKey;
class Place;

// The single veto over every path that anything wants to remove. An immutable value, cheap to copy. It
// decides and changes nothing. Any thread.
class SafetyPolicy {
public:
    // May be removed with the user's own rights.
    struct Allowed {
        bool operator==(const Allowed&) const = default;
    };
    // Kept in sync by a cloud provider: what is removed here disappears from all the user's machines.
    struct SyncedCloud {
        std::string provider; // its display name
        bool operator==(const SyncedCloud&) const = default;
    };
    // In an allowed location outside the home folder, which only root can change.
    struct NeedsAdmin {
        bool operator==(const NeedsAdmin&) const = default;
    };
    // Never removed. The reason is shown to the user and logged word for word.
    struct Blocked {
        std::string reason;
        bool operator==(const Blocked&) const = default;
    };
    using Verdict = std::variant<Allowed, SyncedCloud, NeedsAdmin, Blocked>;

    // True for Allowed and NeedsAdmin.
    static bool safeForAutomation(const Verdict& verdict);

    // Where a protected location is a link, what it leads to at this moment is protected too.
    SafetyPolicy(const Paths& paths, const std::vector<std::string>& userProtected);

    // Every bad input ends in a verdict. A path that does not exist is judged by its text. Links in its
    // parents are followed anew on each call, and the place they lead to within the home folder is judged as
    // well.
    Verdict check(const std::string& path) const;

    // The stricter of the verdicts on the path and on the place that was opened for it. Ask this right before
    // acting on the place: whatever happens to the path's parents afterwards, the place stays what was
    // judged.
    Verdict check(const std::string& path, const Place& place) const;

    // Replaces a leading "~" by the home folder and removes repeated and trailing slashes, "." and "..". A
    // ".." after a link goes up from where the link leads.
    static std::string normalize(std::string_view path, std::string_view home);

    // Judges many paths and resolves each of their folders once. Its knowledge grows old, so it is for
    // showing findings and not for acting on them. One thread at a time.
    class Batch {
    public:
        explicit Batch(const SafetyPolicy& policy);
        ~Batch();
        Batch(const Batch&) = delete;
        Batch& operator=(const Batch&) = delete;

        Verdict check(const std::string& path);
        Verdict check(const std::string& path, const Place& place);

    private:
        const SafetyPolicy& policy_;
        std::unique_ptr<LinkResolver> resolver_;
    };

private:
    struct Rules;
    struct Location;

    std::optional<PathKey> keyOf(const std::string& path) const;
    Verdict check(const std::string& path, LinkResolver& resolver) const;
    Verdict check(const std::string& path, const Place& place, LinkResolver& resolver) const;
    Verdict judge(const PathKey& path, const std::string& real, const std::string& realHome) const;
    std::optional<Blocked> vetoOnTarget(const Location& location) const;
    Verdict judgeInHome(const Location& location) const;
    Verdict judgeOutside(const Location& location) const;

    std::shared_ptr<const Rules> rules_;
};

} // namespace loftmere
