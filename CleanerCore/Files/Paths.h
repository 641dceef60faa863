#pragma once

#include "CleanerCore/Support/Result.h"

#include <string>
#include <string_view>

namespace loftmere {

namespace AppInfo {

inline constexpr const char* name = "Ostrel Loftmere";
inline constexpr const char* bundleID = "com.ostrel.loftmere";
inline constexpr const char* agentLabel = "com.ostrel.loftmere.agent";

} // namespace AppInfo

// Every location of the program, computed from one home folder. All are absolute when `home` is.
class Paths {
public:
    // Stores the home folder without repeated slashes, "." and "..".
    explicit Paths(std::string_view home);

    const std::string& home() const { return home_; }
    std::string library() const { return lib(""); }
    std::string lib(std::string_view relative) const; // `relative` below `library`
    std::string supportDir() const { return lib("Application Support/Ostrel Loftmere"); }
    std::string quarantineDir() const { return supportDir() + "/Quarantine"; }
    std::string configFile() const { return supportDir() + "/config.json"; }
    std::string rulesFile() const { return supportDir() + "/rules.json"; }
    std::string lockFile() const { return supportDir() + "/agent.lock"; }
    std::string auditFile() const { return supportDir() + "/audit.jsonl"; }
    std::string agentLogFile() const { return lib("Logs/Ostrel Loftmere/agent.log"); }
    std::string launchAgentPlist() const { return lib("LaunchAgents/com.ostrel.loftmere.agent.plist"); }

    // Makes `quarantineDir` and the folder of `agentLogFile`, after carrying over what a former installation
    // left. All of it is for the user alone, also what is there already; only the lock file may be read by
    // others. Fails when a folder cannot be made.
    Status ensureSupportDirs() const;

    // Moves a former installation's support folder to `supportDir` in one rename. If `supportDir` exists, the
    // old folder stays untouched. Silent on failure.
    void migrateLegacySupportDir() const;

    bool operator==(const Paths&) const = default;

private:
    std::string home_;
};

} // namespace loftmere
