#include "CleanerCore/Removal/Administrator/AdminRunner.h"

#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Removal/Administrator/PrivilegedSession.h"
#include "CleanerCore/Support/Text.h"

#include <fmt/format.h>

#include <string_view>

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

struct Explanation {
    std::string_view sign; // in the lower-cased output
    std::string_view sentence;
};

constexpr std::string_view cancelled = "You cancelled the password prompt";
constexpr std::string_view inUse = "File is in use — quit the app and retry";

// The first row whose sign is there decides.
constexpr Explanation explanations[] = {
    {"user canceled", cancelled},
    {"user cancelled", cancelled},
    {"-128", cancelled},
    {"operation not permitted",
     "macOS blocks this path (System Integrity Protection or Full Disk Access missing)"},
    {"resource busy", inUse},
    {"in use", inUse},
    {"read-only", "Read-only volume"},
};

bool isDaemonsPlist(const std::string& path) {
    return path.starts_with("/Library/LaunchDaemons/") && path.ends_with(".plist");
}

} // namespace

Shell::Result runAsAdministrator(const std::string& command, const std::string& text, double timeout) {
    if (Shell::which("osascript")) return askWithOsascript(command, text, timeout);
    return askWithPkexec(command, text, timeout);
}

namespace AdminRunner {

Shell::Result remove(const std::vector<ClearedPath>& paths, PrivilegedSession& session) {
    if (paths.empty()) return {};
    PrivilegedSession::Remove request;
    for (const ClearedPath& cleared : paths) {
        // A daemon that keeps running would hold, or write again, what is about to go. Whether it ran at all
        // does not matter.
        if (isDaemonsPlist(cleared.path())) session.run(PrivilegedSession::Bootout{cleared.path()});
        request.paths.push_back(cleared.path());
    }
    return session.run(request);
}

Shell::Result remove(const std::vector<ClearedPath>& paths) {
    return remove(paths, PrivilegedSession::shared());
}

bool isGone(const std::string& path, const Shell::Result& result) {
    return result.ok() ? !FS::exists(path) : !FS::isReachable(path);
}

std::string explain(const Shell::Result& result, const std::string& path) {
    const std::string words = asciiLowercased(result.err + result.out);
    for (const Explanation& row : explanations) {
        if (words.find(row.sign) != std::string::npos) return std::string(row.sentence);
    }
    if (result.err.empty()) return fmt::format("Still present after removal ({})", path);
    return std::string(firstCharacters(result.err, 160));
}

Shell::Result oneShot(const std::string& command, const std::string& purpose, const AdminPrompt& prompt) {
    constexpr double limit = 300;
    return prompt(command, "Ostrel Loftmere: " + purpose, limit);
}

} // namespace AdminRunner

} // namespace loftmere
