#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

// The only way to run outside tools: without a shell, always with a time limit. Never throws and never hangs.
// Any number of threads may run tools at once. Blocks its caller, so it is not for the main thread.
namespace loftmere::Shell {

struct Result {
    int32_t status = 0; // the child's own exit status (or the signal that ended it), or a constant below
    std::string out;    // standard output, valid UTF-8
    std::string err;    // standard error, or a message of the runner

    bool ok() const { return status == 0; }
};

inline constexpr int32_t notFound = 127; // no process was started
inline constexpr int32_t notLaunched = 126;
inline constexpr int32_t timedOut = -1;
inline constexpr int32_t cancelled = -2;

// How long a run may last beyond its time limit, in seconds. Only tests change the defaults.
struct Grace {
    double obey = 2.0; // to end after SIGTERM, before SIGKILL
    double read = 5.0; // for output that a grandchild holds open
};

// The path of a tool. An absolute name is its own path; any other is looked up in the system's folders first
// and then in PATH. Absent when there is no executable file.
std::optional<std::string> which(const std::string& name);

// Runs a tool until it ends, for at most `timeout` seconds and the grace. `isCancelled`, if given, is called
// on this thread every 0.05 seconds. When it returns true the tool is killed at once, so pass it only for
// tools that change nothing.
Result run(const std::string& tool, const std::vector<std::string>& arguments, double timeout,
           Grace grace = {}, const std::function<bool()>& isCancelled = nullptr);

// For tests only: replacements for tools that the system's folders may hold as well.
struct SearchOverride {
    std::vector<std::string> folders; // searched before all others
    std::vector<std::string> absent;  // names that are found in these folders only
};

// Replaces the override of the whole process; any thread.
void overrideSearch(SearchOverride override);

} // namespace loftmere::Shell
