#include "CleanerCore/Platform/NamedPipe.h"
#include "CleanerCore/Platform/System.h"
#include "CleanerCore/Process/Shell.h"
#include "CleanerCore/Removal/Administrator/PrivilegedSession.h"
#include "CleanerCore/Support/Crypto.h"
#include "CleanerCore/Support/Text.h"
#include "tests/Support/SwapRig.h"
#include "tests/Support/TemporaryHome.h"
#include "tests/Support/Waiting.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <signal.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

namespace loftmere::test {

namespace fs = std::filesystem;

namespace {

constexpr uid_t nobody = 65534;

// A process that waits to be killed, of another user perhaps.
pid_t startApplication(uid_t user = ::getuid()) {
    const pid_t application = ::fork();
    if (application != 0) return application;
    if (::setuid(user) != 0) ::_exit(1);
    while (true) ::pause();
}

void endApplication(pid_t application) {
    ::kill(application, SIGKILL);
    siginfo_t ended;
    ::waitid(P_PID, static_cast<id_t>(application), &ended, WEXITED);
}

// The helper as a process of its own over real pipes, with a folder of the test's among the allowed ones and
// harmless commands in the place of the system's. It is the folder of `user`.
class Helper {
public:
    explicit Helper(const std::string& settings = "", pid_t application = ::getpid(),
                    uid_t user = ::getuid()) {
        home_.folder("allowed");
        home_.folder("outside");
        home_.folder("priv");
        const std::string commands = "READ_LIMIT=0.1\n"
                                     "ALLOWED_ROOTS+=(" +
                                     shellQuoted(at("allowed/")) +
                                     ")\n"
                                     "purge() { echo freed; echo more; }\n"
                                     "bootout() { echo \"booted $1\"; false; }\n"
                                     "flush_dns() { echo 'no such thing' >&2; false; }\n";
        home_.file("priv/helper.sh", PrivilegedSession::helperScript(commands + settings));
        EXPECT_TRUE(makeNamedPipe(at("priv/cmd"), 0600));
        EXPECT_TRUE(makeNamedPipe(at("priv/out"), 0600));
        for (const char* path : {"priv", "priv/cmd", "priv/out"})
            EXPECT_EQ(::chown(at(path).c_str(), user, static_cast<gid_t>(-1)), 0);
        Shell::run("bash",
                   {"-c", "nohup bash \"$@\" >/dev/null 2>&1 &", "-", at("priv/helper.sh"), at("priv"),
                    "secret", std::to_string(application)},
                   5);
        EXPECT_TRUE(comesTrue([&] { return askWith("secret", "PING") == "OK"; }));
    }
    ~Helper() { ask("QUIT"); }

    std::string at(const std::string& relative) const { return home_.path() + "/" + relative; }
    std::string make(const std::string& relative) const { return home_.file(relative, "content"); }
    const TemporaryHome& home() const { return home_; }

    std::string ask(const std::string& words) const { return askWith("secret", words); }
    std::string askWith(const std::string& token, const std::string& words) const {
        return askThroughPipes({.requests = at("priv/cmd"),
                                .replies = at("priv/out"),
                                .line = token + " " + words,
                                .stale = 0,
                                .timeout = 20})
            .reply.value_or("(none)");
    }
    std::string remove(const std::vector<std::string>& paths) const {
        std::string words = "RM";
        for (const std::string& path : paths) words += " " + base64Encoded(path);
        return ask(words);
    }
    bool ends() const {
        return comesTrue([&] { return !fs::exists(at("priv")); });
    }

private:
    TemporaryHome home_;
};

} // namespace

TEST(PrivilegedHelperTests, AnswersByTheTable) {
    const Helper helper;
    const std::string inside = helper.at("allowed/x.plist");
    const std::string outside = helper.at("outside/x.plist");
    const struct {
        std::string request;
        std::string reply;
    } rows[] = {
        {"PING", "OK"},
        {"PURGE", "OK freed"},
        {"KILL 9 abc", "ERR bad-args"},
        {"KILL -9 1", "ERR bad-args"},
        {"KILL", "ERR bad-args"},
        {"KILL 0 " + std::to_string(::getpid()), "OK"},
        {"BOOTOUT " + base64Encoded(inside), "OK booted " + inside},
        {"BOOTOUT " + base64Encoded(outside), "ERR refused " + outside},
        {"BOOTOUT " + base64Encoded("/Library/Caches/../x"), "ERR refused /Library/Caches/../x"},
        {"SCRIPT flush-dns", "OK no such thing"},
        {"SCRIPT", "ERR unknown-script"},
        {"SCRIPT periodic-hourly", "ERR unknown-script"},
        {"RM", "OK removed 0"},
        {"RM !!!", "ERR refused !!!"},
        {"", "ERR unknown-op"},
        {"ping", "ERR unknown-op"},
        {"/* $(touch " + helper.at("outside/ran") + ")", "ERR unknown-op"},
    };
    for (const auto& row : rows) EXPECT_EQ(helper.ask(row.request), row.reply) << row.request;
    EXPECT_TRUE(helper.ask("KILL 0 999999999").starts_with("ERR ")) << "of a process that is not there";
    EXPECT_EQ(helper.askWith("secre", "PING"), "ERR bad-token");
    EXPECT_EQ(helper.askWith("", "secret PING"), "OK") << "blanks only separate";
    EXPECT_FALSE(fs::exists(helper.at("outside/ran")));
}

TEST(PrivilegedHelperTests, RemovesWhatItMay) {
    const Helper helper;
    helper.home().link("allowed/link", helper.at("outside"));
    const std::vector<std::string> paths{
        helper.make("allowed/two words"),  helper.make("allowed/line\nbreak"),
        helper.make("allowed/at end\n\n"), helper.make("allowed/*"),
        helper.make("allowed/-rf"),        helper.make("allowed/\xff\xfe"),
        helper.make("allowed/'\"$(x)\\"),  helper.home().folder("allowed/slash") + "//",
        helper.at("allowed/link"),         helper.at("allowed/gone/already"),
    };
    helper.make("allowed/slash/deep/file");
    helper.make("allowed/at end");
    helper.make("outside/file");
    EXPECT_EQ(helper.remove(paths), "OK removed 10");
    EXPECT_TRUE(fs::exists(helper.at("allowed/at end")));
    EXPECT_TRUE(fs::exists(helper.at("outside/file")));
    fs::remove(helper.at("allowed/at end"));
    EXPECT_TRUE(fs::is_empty(helper.at("allowed")));
}

TEST(PrivilegedHelperTests, RefusesWhatItMayNot) {
    const Helper helper;
    helper.home().link("allowed/link", helper.at("outside"));
    helper.home().link("allowed/self", helper.at("allowed"));
    helper.home().folder("allowed/folder");
    helper.make("outside/file");
    helper.make("allowed/a..b");
    helper.make("allowedfile");
    const std::vector<std::string> refused{
        helper.at("outside/file"),
        helper.at("allowed/../outside/file"),
        helper.at("allowed/a..b"),
        helper.at("allowed/link/file"),
        helper.at("allowed/"),
        helper.at("allowed/."),
        helper.at("allowed/folder/."),
        helper.at("allowed///"),
        helper.at("allowedfile"),
        "allowed/folder",
        "/etc/hostname",
        "/Library/Preferences/x",
    };
    for (const std::string& path : refused) EXPECT_EQ(helper.remove({path}), "ERR refused " + path);
    const std::string good = helper.make("allowed/good");
    EXPECT_EQ(helper.remove({refused[0], good, helper.at("allowed/self/folder"), refused[3]}),
              "ERR refused " + refused[0] + " " + refused[3]);
    EXPECT_FALSE(fs::exists(good));
    EXPECT_FALSE(fs::exists(helper.at("allowed/folder"))) << "a link that stays inside may be followed";
    EXPECT_TRUE(fs::exists(helper.at("outside/file")));
}

TEST(PrivilegedHelperThreaded, StaysInsideWhileAParentIsExchanged) {
    const Helper helper;
    const std::string parent = helper.home().folder("allowed/parent");
    const std::string victim = helper.make("outside/victim");
    const SwapRig rig(parent, helper.home().link("allowed/link", helper.at("outside")));
    helper.remove(std::vector<std::string>(80, parent + "/victim"));
    EXPECT_GT(rig.exchanges(), 100);
    EXPECT_TRUE(fs::exists(victim));
}

TEST(PrivilegedHelperTests, EndsWithTheApplicationOrWhenIdle) {
    EXPECT_TRUE(Helper("IDLE_LIMIT=2\n").ends());

    const Helper leaving;
    EXPECT_EQ(leaving.ask("QUIT"), "OK");
    EXPECT_TRUE(leaving.ends());

    // The application is killed: once while nothing happens, once while its reply waits to be fetched.
    for (const bool owesReply : {false, true}) {
        const pid_t application = startApplication();
        const Helper helper("", application);
        const int requests = ::open(helper.at("priv/cmd").c_str(), O_WRONLY | O_CLOEXEC);
        if (owesReply) EXPECT_EQ(::write(requests, "secret PING\n", 12), 12);
        ::close(requests);
        endApplication(application);
        EXPECT_TRUE(helper.ends()) << owesReply;
    }
}

TEST(PrivilegedHelperTests, LeavesTheFolderOfALaterSessionAlone) {
    const Helper helper;
    fs::rename(helper.at("priv"), helper.at("moved"));
    helper.make("priv/of the later session");
    fs::remove(helper.at("moved/out"));
    EXPECT_TRUE(comesTrue([&] { return ::open(helper.at("moved/cmd").c_str(), O_WRONLY | O_NONBLOCK) < 0; }));
    EXPECT_TRUE(fs::exists(helper.at("priv/of the later session")));
}

TEST(PrivilegedHelperTests, RunsNothingThatIsAddedToItsFile) {
    const TemporaryHome outside;
    const Helper helper("trap 'touch " + outside.at("ended") + "' EXIT\n");
    std::ofstream(helper.at("priv/helper.sh"), std::ios::app) << "touch " << outside.at("ran") << "\n";
    helper.ask("QUIT");
    EXPECT_TRUE(comesTrue([&] { return fs::exists(outside.at("ended")); }));
    EXPECT_FALSE(fs::exists(outside.at("ran")));
}

// The user exchanges each pipe for a link at the very moment when root is about to open it.
TEST(PrivilegedHelperTests, OpensNothingThroughALinkOfTheUsers) {
    if (::getuid() != 0) GTEST_SKIP() << "needs root";
    const pid_t application = startApplication(nobody);
    const TemporaryHome outside;
    const std::string made = outside.folder("made");
    const std::string attack =
        outside.file("attack", "setpriv --reuid 65534 sh -c 'mv $0 was-$0; ln -s $1/$0 $0' \"$1\" " + made);
    const std::string atEachOpening = "set -T\ntrap 'case $BASH_COMMAND in exec\\ 3*) sh " + attack +
                                      " cmd ;; exec\\ 4*) sh " + attack + " out ;; esac' DEBUG\n";
    EXPECT_EQ(Helper(atEachOpening, application, nobody).ask("PURGE"), "OK freed");
    EXPECT_TRUE(fs::is_empty(made));
    endApplication(application);
}

TEST(PrivilegedHelperTests, LeavesAFolderOfSomebodyElseAlone) {
    if (::getuid() != 0) GTEST_SKIP() << "needs root";
    const TemporaryHome home;
    const std::string script = home.file("priv/helper.sh", PrivilegedSession::helperScript());
    for (const char* pipe : {"cmd", "out"})
        ASSERT_TRUE(makeNamedPipe(home.at(std::string("priv/") + pipe), 0600));
    ASSERT_EQ(::chown(home.at("priv").c_str(), nobody, nobody), 0);
    EXPECT_EQ(Shell::run("bash", {script, home.at("priv"), "secret", std::to_string(::getpid())}, 5).status,
              1);
    EXPECT_TRUE(fs::exists(script));
}

TEST(PrivilegedHelperTests, ItsLimitsAndRootsAreTheseAndNoOthers) {
    const TemporaryHome home;
    const std::string show = "printf '%s\n' $IDLE_LIMIT $READ_LIMIT \"${ALLOWED_ROOTS[@]}\"\nexit\n";
    EXPECT_EQ(Shell::run("bash", {home.file("show.sh", PrivilegedSession::helperScript(show))}, 5).out,
              "1800\n20\n/Library/Caches/\n/Library/Logs/\n/private/var/log/\n/private/var/folders/\n"
              "/Library/LaunchDaemons/\n/Library/LaunchAgents/\n/Library/Application Support/\n"
              "/Library/Containers/\n/Applications/\n");
    const std::string script = home.file("helper.sh", PrivilegedSession::helperScript());
    const std::vector<std::string> wanting[]{
        {script}, {script, home.path(), "secret", ""}, {script, "", "secret", "1"}};
    for (const auto& arguments : wanting) EXPECT_EQ(Shell::run("bash", arguments, 5).status, 1);
    EXPECT_TRUE(fs::exists(script));
}

// What the helper calls must be in the table, and the table must not search for what runs as root.
TEST(PrivilegedHelperTests, EveryCommandIsAProgramOfTheSystem) {
    std::vector<std::string_view> names;
    for (const AdminCommand& command : adminCommands()) {
        EXPECT_TRUE(command.text.starts_with('/')) << command.name;
        EXPECT_EQ(adminCommand(command.name), command.text);
        names.push_back(command.name);
    }
    EXPECT_THAT(names, testing::ElementsAre("decode_base64", "working_folder", "remove", "kill_process",
                                            "bootout", "purge", "periodic_daily", "periodic_weekly",
                                            "periodic_monthly", "rebuild_spotlight", "flush_dns"));
    EXPECT_EQ(adminCommand("remove"), "/bin/rm -rf --");
}

} // namespace loftmere::test
