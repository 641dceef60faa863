#include "CleanerCore/Process/Shell.h"

#include "CleanerCore/Platform/ChildProcess.h"
#include "CleanerCore/Support/Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <mutex>

namespace loftmere::Shell {

namespace {

// The system's own tools win over others of the same name in a user's PATH.
constexpr const char* systemFolders[] = {
    "/usr/bin",
    "/bin",
    "/usr/sbin",
    "/sbin",
    "/opt/homebrew/bin",
    "/usr/local/bin",
    "/Applications/Docker.app/Contents/Resources/bin",
};

constexpr double longestLimit = 365.0 * 86400; // so that absurd limits do not overflow the clock

class OverrideHolder {
public:
    void set(SearchOverride value) {
        const std::lock_guard guard(lock_);
        value_ = std::move(value);
    }
    SearchOverride get() {
        const std::lock_guard guard(lock_);
        return value_;
    }

private:
    std::mutex lock_;
    SearchOverride value_;
};

OverrideHolder& searchOverride() {
    static OverrideHolder holder;
    return holder;
}

std::vector<std::string> searchFolders(const std::string& name) {
    const SearchOverride tests = searchOverride().get();
    std::vector<std::string> folders = tests.folders;
    if (std::ranges::find(tests.absent, name) != tests.absent.end()) return folders;
    folders.insert(folders.end(), std::begin(systemFolders), std::end(systemFolders));
    const char* path =
        std::getenv("PATH"); // NOLINT(concurrency-mt-unsafe): nothing here sets the environment
    for (std::string& folder : splitOmittingEmpty(path != nullptr ? path : "", ':')) {
        folders.push_back(std::move(folder));
    }
    return folders;
}

double limited(double seconds) {
    return std::isnan(seconds) ? 0 : std::clamp(seconds, 0.0, longestLimit);
}

ChildProcess::Deadline after(double seconds) {
    using Clock = std::chrono::steady_clock;
    return Clock::now() +
           std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(limited(seconds)));
}

using CancelCheck = std::function<bool()>;

// Calls `wait` until it succeeds, the time is over or `isCancelled` returns true. Whether it succeeded.
template <class Wait> bool waitWhileWanted(double seconds, const CancelCheck& isCancelled, Wait wait) {
    constexpr double interval = 0.05;
    const auto deadline = after(seconds);
    if (!isCancelled) return wait(deadline);
    while (true) {
        const auto next = std::min(deadline, after(interval));
        if (wait(next)) return true;
        if (next == deadline || isCancelled()) return false;
    }
}

// Asks the child to end, then kills it.
void end(ChildProcess& child, double obey) {
    child.terminate();
    if (!child.waitForEnd(after(obey))) child.kill();
}

} // namespace

void overrideSearch(SearchOverride override) {
    searchOverride().set(std::move(override));
}

std::optional<std::string> which(const std::string& name) {
    if (name.starts_with('/')) return isExecutableFile(name) ? std::optional(name) : std::nullopt;
    for (const std::string& folder : searchFolders(name)) {
        std::string candidate = folder + "/" + name;
        if (isExecutableFile(candidate)) return candidate;
    }
    return std::nullopt;
}

Result run(const std::string& tool, const std::vector<std::string>& arguments, double timeout, Grace grace,
           const CancelCheck& isCancelled) {
    const auto executable = which(tool);
    if (!executable) return {.status = notFound, .out = "", .err = fmt::format("{} not found", tool)};
    const auto started = ChildProcess::start(*executable, arguments);
    if (!started) return {.status = notLaunched, .out = "", .err = started.error().message};

    ChildProcess& child = **started;
    const bool inTime =
        waitWhileWanted(timeout, isCancelled, [&](auto deadline) { return child.waitForEnd(deadline); });
    if (!inTime && isCancelled && isCancelled()) {
        child.kill();
        return {.status = cancelled, .out = "", .err = fmt::format("{} was cancelled", tool)};
    }
    if (!inTime) end(child, grace.obey);
    const bool complete = waitWhileWanted(grace.read, isCancelled,
                                          [&](auto deadline) { return child.waitForOutput(deadline); }) &&
                          child.outputIsComplete();
    Result result;
    result.status = inTime ? child.status() : timedOut;
    if (complete) result.out = repairedUTF8(child.out());
    if (!inTime) {
        result.err = fmt::format("{} timed out after {}s", tool, static_cast<int64_t>(limited(timeout)));
    } else {
        result.err = complete ? repairedUTF8(child.err())
                              : fmt::format("{} produced output that could not be read", tool);
    }
    return result;
}

} // namespace loftmere::Shell
