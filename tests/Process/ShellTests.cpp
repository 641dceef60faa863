#include "CleanerCore/Process/Shell.h"
#include "CleanerCore/Support/Crew.h"
#include "tests/Support/TemporaryHome.h"
#include "tests/Support/Waiting.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <filesystem>

namespace loftmere::test {

namespace fs = std::filesystem;

namespace {

Shell::Result bash(const std::string& script, double timeout = 30, Shell::Grace grace = {}) {
    return Shell::run("bash", {"-c", script}, timeout, grace);
}

double secondsOf(const auto& body) {
    const auto start = std::chrono::steady_clock::now();
    body();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

size_t openDescriptors() {
    return static_cast<size_t>(std::distance(fs::directory_iterator("/dev/fd"), fs::directory_iterator()));
}

bool hasZombies() {
    siginfo_t ended{};
    return ::waitid(P_ALL, 0, &ended, WEXITED | WNOHANG | WNOWAIT) == 0 && ended.si_pid != 0;
}

// Whether a child starts with no signal blocked and none ignored, but those above 31 that the C library keeps
// for itself. True where the system does not tell.
bool startsWithAllSignals() {
    const std::string told = Shell::run("grep", {"-E", "^Sig(Blk|Ign):", "/proc/self/status"}, 30).out;
    for (size_t colon = 0; (colon = told.find(':', colon)) != std::string::npos; ++colon) {
        if ((std::stoull(told.substr(colon + 1), nullptr, 16) & 0x7fffffff) != 0) return false;
    }
    return true;
}

} // namespace

TEST(ShellTests, FindsToolsInTheSystemsFoldersBeforePath) {
    const TemporaryHome home;
    fs::permissions(home.file("bin/true", "#!/bin/sh\n"), fs::perms::owner_all);
    fs::permissions(home.file("bin/only-here", "#!/bin/sh\n"), fs::perms::owner_all);
    home.file("bin/plain", "");
    home.folder("bin/folder");
    const std::string path = ::getenv("PATH");
    ::setenv("PATH", ("::" + home.at("bin") + ":" + path).c_str(), 1);
    EXPECT_EQ(Shell::which("true"), "/usr/bin/true");
    EXPECT_EQ(Shell::which("only-here"), home.at("bin/only-here"));
    for (const char* missing : {"plain", "folder", "", "no-such-tool"})
        EXPECT_EQ(Shell::which(missing), std::nullopt);
    ::setenv("PATH", path.c_str(), 1);
    EXPECT_EQ(Shell::which(home.at("bin/only-here")), home.at("bin/only-here"));
    for (const char* refused : {"bin/plain", "bin", "bin/none"})
        EXPECT_EQ(Shell::which(home.at(refused)), std::nullopt);
    EXPECT_EQ(Shell::which(std::string("true\0x", 6)), std::nullopt);
}

TEST(ShellTests, TellsWhyNothingWasRun) {
    const TemporaryHome home;
    const std::string plain = home.file("plain", "");
    const std::string broken = home.file("broken", "#!/no/such/interpreter\n");
    fs::permissions(broken, fs::perms::owner_all);
    const struct {
        std::string tool;
        std::vector<std::string> arguments;
        int32_t status;
        std::string err;
    } cases[] = {
        {"no-such-tool", {}, 127, "no-such-tool not found"},
        {plain, {}, 127, plain + " not found"},
        {broken, {}, 126, "Could not run " + broken + ": No such file or directory"},
        {"true", {std::string("a\0b", 3)}, 126, "Could not run /usr/bin/true: Invalid argument"},
    };
    for (const auto& row : cases) {
        const Shell::Result result = Shell::run(row.tool, row.arguments, 5);
        EXPECT_EQ(result.status, row.status);
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err, row.err);
    }
}

TEST(ShellTests, ReturnsStatusAndAllOutput) {
    const Shell::Result big =
        bash("head -c 3000000 /dev/zero | tr '\\0' x; head -c 300000 /dev/zero | tr '\\0' y >&2");
    EXPECT_TRUE(big.ok());
    EXPECT_EQ(big.out, std::string(3000000, 'x'));
    EXPECT_EQ(big.err, std::string(300000, 'y'));

    const Shell::Result odd = bash(R"(printf 'a\xff\xfeb'; printf '\xc3' >&2; exit 3)");
    EXPECT_EQ(odd.status, 3);
    EXPECT_EQ(odd.out, "a\uFFFD\uFFFDb");
    EXPECT_EQ(odd.err, "\uFFFD");

    EXPECT_EQ(bash("kill -USR1 $$").status, SIGUSR1);
    EXPECT_EQ(Shell::run("printf", {"%s|", "a b", "", "$HOME", "\"'\n"}, 5).out, "a b||$HOME|\"'\n|");
}

TEST(ShellTests, NoticesTheEndAtOnce) {
    // Twenty runs of a tool that ends in a millisecond: a runner that asks every 50 ms needs a second.
    EXPECT_LT(secondsOf([] {
                  for (int i = 0; i < 20; ++i) Shell::run("true", {}, 5);
              }),
              0.9);
}

TEST(ShellTests, AsksThenKillsWhatRunsTooLong) {
    const Shell::Result obedient = bash("echo begun; exec sleep 60", 0.2);
    EXPECT_EQ(obedient.status, -1);
    EXPECT_EQ(obedient.out, "begun\n");
    EXPECT_EQ(obedient.err, "bash timed out after 0s");

    Shell::Result stubborn;
    const double seconds = secondsOf([&] {
        stubborn =
            bash("trap 'echo asked' TERM; echo word >&2; while :; do sleep 0.01; done", 1.5, {.obey = 0.3});
    });
    EXPECT_EQ(stubborn.status, -1);
    EXPECT_TRUE(stubborn.out.starts_with("asked\n")) << stubborn.out;
    EXPECT_EQ(stubborn.err, "bash timed out after 1s");
    EXPECT_GE(seconds, 1.8);
    EXPECT_FALSE(hasZombies());
}

TEST(ShellThreaded, GivesUpOutputThatAGrandchildHolds) {
    const size_t before = openDescriptors();
    Shell::Result result;
    // The real limits once: the grandchild outlives them, writes into the pipe afterwards and must not be
    // killed by that.
    const TemporaryHome home;
    const double seconds = secondsOf([&] {
        result = bash("echo lost; (sleep 5.3; echo late; echo alive >'" + home.at("alive") + "') & exit 7");
    });
    EXPECT_EQ(result.status, 7);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "bash produced output that could not be read");
    EXPECT_GE(seconds, 5.0);
    EXPECT_LT(seconds, 5.3);
    EXPECT_TRUE(comesTrue([&] { return fs::exists(home.at("alive")) && openDescriptors() == before; }));

    const Shell::Result late = bash("echo lost; sleep 2 & wait", 0.1, {.obey = 0.5, .read = 0.1});
    EXPECT_EQ(late.status, -1);
    EXPECT_EQ(late.out, "");
    EXPECT_EQ(late.err, "bash timed out after 0s");
}

TEST(ShellThreaded, RunsSideBySideWithoutLeaks) {
    // A descriptor that a library forgot to mark, blocked and ignored signals: nothing of it may reach a
    // child.
    const int foreign = ::dup2(STDERR_FILENO, 97);
    sigset_t blocked;
    sigset_t former;
    sigfillset(&blocked);
    ::pthread_sigmask(SIG_BLOCK, &blocked, &former);
    const auto pipeHandler = ::signal(SIGPIPE, SIG_IGN);
    const size_t before = openDescriptors();
    std::atomic<int> wrong = 0;
    concurrentPerform(200, 16, [&](size_t i) {
        const Shell::Result open = bash("echo /dev/fd/*; exit " + std::to_string(i % 100));
        const bool clean = open.out.starts_with("/dev/fd/0 /dev/fd/1 /dev/fd/2") && open.out.size() < 42;
        if (!clean || open.status != static_cast<int32_t>(i % 100) || !startsWithAllSignals()) ++wrong;
    });
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(openDescriptors(), before);
    EXPECT_FALSE(hasZombies());
    ::signal(SIGPIPE, pipeHandler);
    ::pthread_sigmask(SIG_SETMASK, &former, nullptr);
    ::close(foreign);
}

} // namespace loftmere::test
