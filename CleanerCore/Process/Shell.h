#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// The one way in which outside tools are run: without a shell, always with a time limit. Never throws and
// never hangs; any number of threads may run tools at once. Blocks its caller, so never on the main thread.
namespace loftmere::Shell {

struct Result {
    int32_t status = 0; // the child's own exit status, or one of the constants below
    std::string out;    // standard output, valid UTF-8
    std::string err;    // standard error, or a message of the runner

    bool ok() const { return status == 0; }
};

inline constexpr int32_t notFound = 127; // no process was started
inline constexpr int32_t notLaunched = 126;
inline constexpr int32_t timedOut = -1;

// The executable that a name stands for: an absolute name as it is, any other looked up in the system's
// folders first and in PATH after them. Absent when there is no executable file.
std::optional<std::string> which(const std::string& name);

// Runs a tool to its end, but for at most `timeout` seconds, plus 2 in which it may obey SIGTERM before it is
// killed, plus 5 for output that a grandchild holds open.
Result run(const std::string& tool, const std::vector<std::string>& arguments, double timeout);

} // namespace loftmere::Shell
