#include "CleanerCore/Process/Shell.h"
#include "CleanerCore/Removal/Administrator/AdminRunner.h"
#include "CleanerCore/Removal/Administrator/PrivilegedSession.h"
#include "CleanerCore/Support/Crew.h"
#include "CleanerCore/Support/PathText.h"
#include "tests/Support/OrdinaryUser.h"
#include "tests/Support/ScriptedTools.h"
#include "tests/Support/Waiting.h"

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <signal.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <tuple>

namespace loftmere::test {

namespace fs = std::filesystem;
using testing::ElementsAre;
using Session = PrivilegedSession;

namespace {

constexpr const char* cancelling =
    "echo 'Error executing command as another user: Request dismissed' >&2; exit 126";

// A session whose prompt tool is a stand-in that agrees at once, and whose helper may remove below "allowed".
class PrivilegedSessionTests : public testing::Test {
protected:
    PrivilegedSessionTests() {
        tools.remove("osascript");
        tools.add("pkexec", "exec \"$@\"");
    }
    ~PrivilegedSessionTests() override { session.end(); }

    Session::Settings settings(const std::string& more = "") const {
        return {.folder = home.at("a 'quoted' folder/priv"),
                .prompt = runAsAdministrator,
                .helperSettings =
                    fmt::format("READ_LIMIT=0.1\nHOME_={0}\nALLOWED_ROOTS+=(\"$HOME_/allowed/\")\n"
                                "echo $$ >\"$HOME_/helper.pid\"\npurge() {{ echo freed; }}\n",
                                home.path()) +
                    more,
                .limit = std::nullopt};
    }
    std::string priv(const std::string& name) const { return home.at("a 'quoted' folder/priv/" + name); }
    size_t prompts() const { return tools.calls("pkexec").size(); }
    pid_t helper() const {
        pid_t pid = 0;
        std::ifstream(home.at("helper.pid")) >> pid;
        return pid;
    }
    std::vector<ClearedPath> cleared(const std::vector<std::string>& paths) const {
        const auto permit = RemovalPermit::ask(home.paths(), {});
        std::vector<ClearedPath> all;
        for (const std::string& path : paths) all.push_back(permit->clearForRoot(path).value());
        return all;
    }
    static fs::perms mode(const std::string& path) { return fs::status(path).permissions(); }

    TemporaryHome home;
    ScriptedTools tools;
    Session session{settings()};
};

} // namespace

using PrivilegedSessionThreaded = PrivilegedSessionTests;

TEST_F(PrivilegedSessionThreaded, AsksOnceForAsLongAsItLasts) {
    EXPECT_FALSE(session.isActive());
    concurrentPerform(4, 4, [&](size_t) { EXPECT_EQ(session.run(Session::Purge{}).out, "freed"); });
    EXPECT_TRUE(session.isActive());
    ASSERT_EQ(prompts(), 1);
    EXPECT_EQ(tools.calls("pkexec")[0].back(), "Ostrel Loftmere needs permission once for this session.");
    EXPECT_EQ(mode(priv("")), fs::perms::owner_all);
    EXPECT_EQ(mode(priv("helper.sh")), fs::perms::owner_all);
    for (const char* pipe : {"cmd", "out"}) {
        EXPECT_EQ(mode(priv(pipe)), fs::perms::owner_read | fs::perms::owner_write);
    }

    const Shell::Result refused = session.run(Session::Remove{{"/etc/no such thing"}});
    EXPECT_EQ(std::tie(refused.status, refused.out, refused.err),
              std::tuple(1, "", "ERR refused /etc/no such thing"));
    EXPECT_EQ(session.run(Session::Kill{.pid = ::getpid(), .signal = 0}).status, 0);
    EXPECT_EQ(session.run(Session::Kill{.pid = -5, .signal = 9}).err, "ERR bad-args");

    session.end();
    EXPECT_FALSE(session.isActive());
    EXPECT_FALSE(fs::exists(priv("")));
    EXPECT_EQ(session.run(Session::Purge{}).out, "freed");
    ASSERT_EQ(prompts(), 2);
    EXPECT_NE(tools.calls("pkexec")[0][2], tools.calls("pkexec")[1][2]) << "each session has its own token";
}

TEST_F(PrivilegedSessionTests, ServesAnOrdinaryUserAsRoot) {
    const std::string crash = fmt::format("chown 0 \"{0}\"; chmod 711 \"{0}\"; exit 1", priv(""));
    const OrdinaryUser user({home.path(), parentPath(parentPath(tools.add("pkexec", crash)))});
    EXPECT_FALSE(session.run(Session::Remove{{"/Library/Caches/x"}}).ok()) << "and the folder stays root's";
    const std::string exchange =
        fmt::format("echo 'touch {}' >\"{}\"; exec \"$@\"", home.at("ran"), priv("helper.sh"));
    tools.add("pkexec", exchange); // while the password is typed
    EXPECT_EQ(session.run(Session::Purge{}).out, "freed");
    EXPECT_FALSE(fs::exists(home.at("ran")));
    EXPECT_EQ(mode(priv("")), fs::perms::owner_all);
    session.end();
    EXPECT_TRUE(comesTrue([&] { return !fs::exists(priv("")); }));
}

TEST_F(PrivilegedSessionTests, RemovesManyPathsInOneRequest) {
    const std::string name(240, 'n');
    const std::string folder = home.folder(fmt::format("allowed/{0}/{0}/{0}", name));
    std::vector<std::string> paths; // more than a pipe holds
    for (int i = 0; i < 70; ++i) paths.push_back(home.file(fmt::format("{}/{}", folder, i), ""));
    const Shell::Result result = AdminRunner::remove(cleared(paths), session);
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out, "removed 70");
    EXPECT_TRUE(fs::is_empty(folder));
    EXPECT_EQ(prompts(), 1);
    EXPECT_TRUE(AdminRunner::remove({}, session).ok());
}

TEST_F(PrivilegedSessionTests, FallsBackWhenThePromptIsCancelled) {
    tools.add("pkexec", cancelling);
    const std::string plist = "/Library/LaunchDaemons/it's.plist";
    const Shell::Result result = AdminRunner::remove(cleared({plist, "/Library/Caches/x"}), session);
    EXPECT_EQ(std::tie(result.status, result.out, result.err),
              std::tuple(1, "", "The administrator helper could not be started"));
    const auto calls = tools.calls("pkexec");
    ASSERT_EQ(calls.size(), 3) << "a session, the one command that unloads the daemon, a session again";
    const std::string bootout = R"(/bin/launchctl bootout system '/Library/LaunchDaemons/it'\''s.plist')";
    EXPECT_THAT(calls[1], ElementsAre("/bin/sh", "-c", bootout, "Ostrel Loftmere: stop a background item"));
    EXPECT_TRUE(fs::exists(priv("cmd"))) << "what a cancelled prompt leaves stays until the next start";

    tools.add("pkexec", "[[ $3 != *helper.sh* ]] && echo done");
    const struct {
        Session::Operation operation;
        std::string command;
        std::string purpose;
    } rows[] = {
        {Session::Kill{.pid = 77, .signal = 15}, "/bin/kill -15 77", "quit an app"},
        {Session::Maintenance{Session::Script::rebuildSpotlight}, "/usr/bin/updatedb", "run maintenance"},
        {Session::Purge{}, "/usr/sbin/sysctl -q -w vm.drop_caches=1", "free inactive memory"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(session.run(row.operation).out, "done\n");
        EXPECT_THAT(tools.calls("pkexec").back(),
                    ElementsAre("/bin/sh", "-c", row.command, "Ostrel Loftmere: " + row.purpose));
    }
    EXPECT_FALSE(session.isActive()) << "and the lock is free";
}

TEST_F(PrivilegedSessionTests, StartsAnewWhenTheHelperIsGone) {
    session.run(Session::Purge{});
    ::kill(helper(), SIGKILL);
    EXPECT_EQ(session.run(Session::Purge{}).out, "freed");
    EXPECT_EQ(prompts(), 2);

    // It dies while it works, at each attempt: noticed at once, not when five minutes have passed.
    Session dying(settings("remove() { kill -KILL $$; }\n"));
    const std::string path = home.file("allowed/file", "");
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(dying.run(Session::Remove{{path}}).err, "The administrator helper could not be started");
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
    EXPECT_EQ(prompts(), 3);
}

TEST_F(PrivilegedSessionTests, NeverTakesALateReplyForAnother) {
    Session::Settings slow = settings("trap 'echo x >>\"$HOME_/ended\"' EXIT\n"
                                      "purge() { if mkdir \"$HOME_/first\"; then\n"
                                      "until [ -e \"$HOME_/go\" ]; do sleep 0.01; done; echo first\n"
                                      "else echo second; fi 2>/dev/null; }\n");
    slow.limit = 1;
    Session given(slow);
    const Session::Kill nothing{.pid = ::getpid(), .signal = 0};
    EXPECT_TRUE(given.run(nothing).ok());
    EXPECT_EQ(given.run(Session::Purge{}).out, "second") << "the silent helper is given up";
    EXPECT_EQ(prompts(), 2);
    home.file("go", "");
    EXPECT_TRUE(comesTrue([&] { return fs::exists(home.at("ended")); })) << "the first has nobody to serve";
    EXPECT_EQ(given.run(nothing).out, "");
    EXPECT_EQ(given.run(Session::Purge{}).out, "second");

    // A helper that did not answer in time whether it lives answers later, and goes on serving.
    ::kill(helper(), SIGSTOP);
    EXPECT_FALSE(given.isActive());
    ::kill(helper(), SIGCONT);
    EXPECT_EQ(given.run(Session::Purge{}).out, "second");
    EXPECT_TRUE(given.isActive());
    EXPECT_EQ(prompts(), 2);
    given.end();
}

TEST_F(PrivilegedSessionTests, AsksWithTheFirstToolThatIsThere) {
    tools.add("osascript");
    AdminRunner::oneShot(R"(echo "a\b")", "say \"hello\"");
    EXPECT_THAT(tools.calls("osascript").back(),
                ElementsAre("-e", R"(do shell script "echo \"a\\b\"" with administrator privileges )"
                                  R"(with prompt "Ostrel Loftmere: say \"hello\"")"));
    tools.remove("osascript");
    tools.add("pkexec", cancelling);
    EXPECT_EQ(AdminRunner::oneShot("true", "try").err, "User canceled");
    tools.remove("pkexec");
    EXPECT_EQ(AdminRunner::oneShot("true", "try").status, 127);
    EXPECT_EQ(session.run(Session::Remove{{"/Library/Caches/x"}}).status, 1);
}

} // namespace loftmere::test
