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

// The system's own tools win over what a user's PATH puts in their place.
constexpr const char* systemFolders[] = {
    "/usr/bin",
    "/bin",
    "/usr/sbin",
    "/sbin",
    "/opt/homebrew/bin",
    "/usr/local/bin",
    "/Applications/Docker.app/Contents/Resources/bin",
};

constexpr double longestLimit = 365.0 * 86400; // keeps absurd limits within what a clock can count

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

// Whether the child ended by itself within the limit; otherwise it is asked to end, then made to.
bool endedInTime(ChildProcess& child, double timeout, double obey) {
    if (child.waitForEnd(after(timeout))) return true;
    child.terminate();
    if (!child.waitForEnd(after(obey))) child.kill();
    return false;
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

Result run(const std::string& tool, const std::vector<std::string>& arguments, double timeout, Grace grace) {
    const auto executable = which(tool);
    if (!executable) return {.status = notFound, .out = "", .err = fmt::format("{} not found", tool)};
    const auto child = ChildProcess::start(*executable, arguments);
    if (!child) return {.status = notLaunched, .out = "", .err = child.error().message};

    const bool inTime = endedInTime(**child, timeout, grace.obey);
    const bool complete = (*child)->waitForOutput(after(grace.read)) && (*child)->outputIsComplete();
    Result result;
    result.status = inTime ? (*child)->status() : timedOut;
    if (complete) result.out = repairedUTF8((*child)->out());
    if (!inTime) {
        result.err = fmt::format("{} timed out after {}s", tool, static_cast<int64_t>(limited(timeout)));
    } else {
        result.err = complete ? repairedUTF8((*child)->err())
                              : fmt::format("{} produced output that could not be read", tool);
    }
    return result;
}

} // namespace loftmere::Shell
