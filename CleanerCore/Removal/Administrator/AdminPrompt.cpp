#include "CleanerCore/Removal/Administrator/AdminPrompt.h"

#include "CleanerCore/Support/Quoting.h"

#include <fmt/format.h>

#include <vector>

namespace loftmere {

namespace {

Shell::Result askWithOsascript(const std::string& command, const std::string& text, double timeout) {
    std::string script =
        fmt::format("do shell script {} with administrator privileges", appleScriptQuoted(command));
    if (!text.empty()) script += " with prompt " + appleScriptQuoted(text);
    return Shell::run("osascript", {"-e", script}, timeout);
}

// pkexec words its question itself and shows the command line with it. The text is the name under which the
// shell runs, so that the user can read there what it is for.
Shell::Result askWithPkexec(const std::string& command, const std::string& text, double timeout) {
    constexpr int32_t dismissed = 126;
    std::vector<std::string> arguments{"/bin/sh", "-c", command};
    if (!text.empty()) arguments.push_back(text);
    Shell::Result result = Shell::run("pkexec", arguments, timeout);
    if (result.status == dismissed && result.err.find("dismissed") != std::string::npos) {
        result.err = "User canceled";
    }
    return result;
}

} // namespace

Shell::Result runAsAdministrator(const std::string& command, const std::string& text, double timeout) {
    if (Shell::which("osascript")) return askWithOsascript(command, text, timeout);
    return askWithPkexec(command, text, timeout);
}

} // namespace loftmere
