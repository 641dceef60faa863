#pragma once

#include "CleanerCore/Process/Shell.h"
#include "CleanerCore/Removal/Administrator/AdminRunner.h"

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace loftmere {

// Root for as long as the application lives, for one password prompt: a helper script, started as root on the
// first need, that carries out a fixed set of operations and checks every path itself. One request at a time;
// a caller waits for those before it, prompt included. Any thread but the main thread.
class PrivilegedSession {
public:
    enum class Script { periodicDaily, periodicWeekly, periodicMonthly, rebuildSpotlight, flushDNS };

    struct Kill {
        int32_t pid = 0;
        int32_t signal = 0;
    };
    struct Bootout {
        std::string plist; // of a system daemon
    };
    struct Remove {
        std::vector<std::string> paths;
    };
    struct Maintenance {
        Script script = Script::periodicDaily;
    };
    struct Purge {};
    using Operation = std::variant<Kill, Bootout, Remove, Maintenance, Purge>;

    // All but the folder is for tests.
    struct Settings {
        std::string folder; // where pipes and script are while the session lasts
        AdminPrompt prompt = runAsAdministrator;
        std::string helperSettings = "";            // as for `helperScript`
        std::optional<double> limit = std::nullopt; // seconds for the reply, instead of each operation's own
    };

    // The one of this process.
    static PrivilegedSession& shared();

    explicit PrivilegedSession(Settings settings);

    // Has the helper do it. When none answers, one is started, with a prompt. Status 0 and the helper's words
    // on success, else status 1 and the helper's reply as the error. When no helper can be had, the operation
    // is done by a one-shot command with a prompt of its own; a removal then fails with status 1.
    Shell::Result run(const Operation& operation);

    // Whether a helper answers right now.
    bool isActive();

    // Sends the helper away. Nothing happens when none was started.
    void end();

    // The text of the helper with this system's commands in it, to be run with /bin/bash. `settings` are
    // shell lines that follow its own constants; only tests have any.
    static std::string helperScript(std::string_view settings = "");

private:
    bool start();
    bool prepareFolder(const std::string& script);
    bool awaitHelper();
    std::optional<std::string> send(const std::string& words, double timeout);
    std::optional<std::string> request(const Operation& operation);
    Shell::Result fallback(const Operation& operation) const;

    const Settings settings_;
    std::mutex lock_; // guards all below, and the protocol: one request at a time
    std::string token_;
    bool started_ = false; // a helper has answered
    size_t owed_ = 0;      // replies that came too late and are still to be read
};

} // namespace loftmere
