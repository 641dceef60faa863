#include "tests/Support/FaultRig.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

namespace loftmere::test {

namespace {

enum class Act { count, die, fail };
constexpr int diedAsAsked = 77;

struct Plan {
    Act act;
    int64_t at;
    int error;
    std::optional<calls::Call> kind;
};
Plan plan{};
std::atomic<int64_t> made = 0;

int onCall(calls::Call call) {
    if (plan.kind && *plan.kind != call) return 0;
    if (++made != plan.at) return 0;
    if (plan.act == Act::die) ::_exit(diedAsAsked);
    return plan.act == Act::fail ? plan.error : 0;
}

void run(const Plan& wanted, const std::function<void()>& operation) {
    plan = wanted;
    made = 0;
    calls::hook = onCall;
    operation();
    calls::hook = nullptr;
}

} // namespace

int64_t callsIn(const std::function<void()>& operation) {
    run({Act::count, 0, 0, std::nullopt}, operation);
    return made;
}

bool dieAtCall(int64_t n, const std::function<void()>& operation) {
    const pid_t child = ::fork();
    if (child == 0) {
        run({Act::die, n, 0, std::nullopt}, operation);
        ::_exit(::testing::Test::HasFailure() ? 1 : 0);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status)) << "ended by signal " << WTERMSIG(status);
    const int code = WEXITSTATUS(status);
    EXPECT_TRUE(code == 0 || code == diedAsAsked) << "exit code " << code;
    return code == diedAsAsked;
}

bool failCall(int64_t n, int error, const std::function<void()>& operation, std::optional<calls::Call> kind) {
    run({Act::fail, n, error, kind}, operation);
    return made >= n;
}

std::string filesBelow(const std::string& folder) {
    namespace fs = std::filesystem;
    std::vector<std::string> lines;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        if (!entry.is_regular_file()) continue;
        std::ifstream file(entry.path(), std::ios::binary);
        lines.push_back(entry.path().lexically_relative(folder).string() + "=" +
                        std::string(std::istreambuf_iterator<char>(file), {}) + "\n");
    }
    std::ranges::sort(lines);
    std::string all;
    for (const std::string& line : lines) all += line;
    return all;
}

} // namespace loftmere::test
