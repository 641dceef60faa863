#pragma once

#include "CleanerCore/Process/Shell.h"
#include "CleanerCore/Safety/RemovalPermit.h"

#include <functional>
#include <string>
#include <vector>

namespace loftmere {

class PrivilegedSession;

// How root is asked for: runs one shell command line as root after the user has agreed. `text` says what for
// (nothing when empty); the limit in seconds covers the prompt and the command. Any status but 0 when the
// user declines.
using AdminPrompt =
    std::function<Shell::Result(const std::string& command, const std::string& text, double timeout)>;

// The system's own prompt, by the first of these tools that is there: osascript, pkexec. The error of a
// prompt that the user dismissed is "User canceled", as osascript has it. Blocks for as long as the user
// thinks; never on the main thread.
Shell::Result runAsAdministrator(const std::string& command, const std::string& text, double timeout);

// What is done as root. `remove` and `oneShot` block, for a password prompt perhaps: never on the main
// thread.
namespace AdminRunner {

// Removes the paths in one request to the session, after unloading the system daemons among them, and with
// one prompt at most when a session can be had. An empty list succeeds without a prompt. Status 0 when all
// are gone; to know which ones are, look at the disk with `isGone`.
Shell::Result remove(const std::vector<ClearedPath>& paths, PrivilegedSession& session);

// The same with the session of this process.
Shell::Result remove(const std::vector<ClearedPath>& paths);

// Whether a path is gone after `remove` has answered `result`. The disk decides; the helper's word counts
// only where the user cannot look. Any thread.
bool isGone(const std::string& path, const Shell::Result& result);

// One sentence for the user on why `path` is still there after `remove` has answered `result`. Any thread.
std::string explain(const Shell::Result& result, const std::string& path);

// One shell command line with a prompt of its own, "Ostrel Loftmere: {purpose}", and a limit of 300 seconds.
Shell::Result oneShot(const std::string& command, const std::string& purpose,
                      const AdminPrompt& prompt = runAsAdministrator);

} // namespace AdminRunner

} // namespace loftmere
