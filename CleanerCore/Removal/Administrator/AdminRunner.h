#pragma once

#include "CleanerCore/Process/Shell.h"
#include "CleanerCore/Removal/Administrator/AdminPrompt.h"
#include "CleanerCore/Removal/Administrator/PrivilegedSession.h"

#include <string>
#include <vector>

// What is done as root. Both operations block, for a password prompt perhaps: never on the main thread.
namespace loftmere::AdminRunner {

// Removes paths in one request to the session, after the system daemons among them were unloaded, and with
// one prompt at most for all when a session can be had. An empty list succeeds without a prompt. Status 0
// when all are gone; whoever needs to know which ones are looks at the disk.
Shell::Result remove(const std::vector<std::string>& paths,
                     PrivilegedSession& session = PrivilegedSession::shared());

// Whether a path that was to be removed is gone, after `remove` has answered `result`. The disk decides, and
// the helper's word only where the user cannot look. Any thread.
bool isGone(const std::string& path, const Shell::Result& result);

// One sentence for the user on why `path` is still there after `remove` has answered `result`. Any thread.
std::string explain(const Shell::Result& result, const std::string& path);

// One shell command line with a prompt of its own, "Ostrel Loftmere: {purpose}", and a limit of 300 seconds.
Shell::Result oneShot(const std::string& command, const std::string& purpose,
                      const AdminPrompt& prompt = runAsAdministrator);

} // namespace loftmere::AdminRunner
