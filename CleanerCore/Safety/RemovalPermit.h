#pragma once

#include "CleanerCore/Files/Paths.h"
#include "CleanerCore/Platform/Place.h"
#include "CleanerCore/Records/AppConfig.h"
#include "CleanerCore/Safety/SafetyPolicy.h"
#include "CleanerCore/Support/Result.h"

#include <expected>
#include <optional>
#include <string>
#include <vector>

namespace loftmere {

// An item that the user's own rights may take away. Only `RemovalPermit::judge` makes one, and every door
// through which an item leaves asks for one: nothing can get past the gate or past the policy. Act on it at
// once, since the judgement grows old.
class ClearedItem {
public:
    // What was judged: the item's folder, held open, and its name. Acting on it reaches nothing else.
    const Place& place() const { return place_; }

    // The item's path as the policy reads it.
    const std::string& path() const { return path_; }

    // Who keeps the item in sync, if anyone does. Then it disappears from all the user's machines.
    const std::optional<std::string>& provider() const { return provider_; }

private:
    friend class RemovalPermit;
    ClearedItem(Place place, std::string path, std::optional<std::string> provider);

    Place place_;
    std::string path_;
    std::optional<std::string> provider_;
};

// A path that root may remove. Only `RemovalPermit::clearForRoot` makes one.
class ClearedPath {
public:
    const std::string& path() const { return path_; } // as the policy reads it

private:
    friend class RemovalPermit;
    explicit ClearedPath(std::string path) : path_(std::move(path)) {}

    std::string path_;
};

// The one gate before everything that removes. While a settings file is there and cannot be read, nobody
// knows what the user protects, so there is no permit and nothing is removed. A permit is a snapshot: ask for
// a new one for each run. Immutable, cheap to copy; any thread.
class RemovalPermit {
public:
    // Reads the settings on disk. Fails with a sentence for the user when they are damaged, may not be read,
    // or are behind a link whose volume is offline. Whatever they protect is protected along with what
    // `config` protects, for a program may have read its own copy of the settings long ago.
    static Result<RemovalPermit> ask(const Paths& paths, const AppConfig& config);

    // The failure of `ask`, for a settings file that is shown to the user as `file`.
    static Failure refusal(const std::string& file);

    const SafetyPolicy& policy() const { return policy_; }

    struct Judgement {
        SafetyPolicy::Verdict verdict;
        Result<ClearedItem> item; // a failure unless the verdict is Allowed or SyncedCloud
    };

    // Judges the item at the path as the disk is now. Where its folder cannot be opened, the path alone is
    // judged and there is no item. The item itself need not exist.
    Judgement judge(const std::string& path) const;

    // The path for root to remove, unless the policy blocks it.
    std::expected<ClearedPath, SafetyPolicy::Blocked> clearForRoot(const std::string& path) const;

    // The path as the policy reads it, which is the path that is acted on.
    std::string normalize(const std::string& path) const { return SafetyPolicy::normalize(path, home_); }

private:
    RemovalPermit(const Paths& paths, const std::vector<std::string>& protectedPaths);

    std::string home_;
    SafetyPolicy policy_;
};

} // namespace loftmere
