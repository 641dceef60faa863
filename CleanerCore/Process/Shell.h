#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// The one way in which outside tools are run: without a shell, always with a time limit. Never throws and
// never hangs; any number of threads may run tools at once. Blocks its caller, so never on the main thread.
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

// How long a run may last beyond its time limit, in seconds. Every caller is served with the defaults; tests
// shorten them.
struct Grace {
    double obey = 2.0; // to end after SIGTERM, before SIGKILL
    double read = 5.0; // for output that a grandchild holds open
};

// The executable that a name stands for: an absolute name as it is, any other looked up in the system's
// folders first and in PATH after them. Absent when there is no executable file.
std::optional<std::string> which(const std::string& name);

// Runs a tool to its end, but for at most `timeout` seconds and the grace.
Result run(const std::string& tool, const std::vector<std::string>& arguments, double timeout,
           Grace grace = {});

// For tests alone: stand-ins for tools that the system's folders may hold too.
struct SearchOverride {
    std::vector<std::string> folders; // searched before all others
    std::vector<std::string> absent;  // names that are found in these folders only
};

// Replaces the override of the whole process; any thread.
void overrideSearch(SearchOverride override);

} // namespace loftmere::Shell
