#include "tests/Terminal/TerminalRun.h"

#include "CleanerCore/Process/Shell.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <csignal>
#include <string_view>

namespace loftmere::test {

namespace {

constexpr int patienceSeconds = 60;
constexpr const char* env = "/usr/bin/env";

// What env is to be given: an environment, the program and its arguments.
std::vector<std::string> wordsFor(const TerminalOptions& options, const std::vector<std::string>& arguments) {
    std::vector<std::string> words{"-i", "HOME=" + options.home, "PATH=/usr/bin:/bin", "LANG=C.UTF-8",
                                   "TERM=xterm-256color"};
    words.insert(words.end(), options.environment.begin(), options.environment.end());
    words.emplace_back(LOFTMERE_TERMINAL);
    words.insert(words.end(), arguments.begin(), arguments.end());
    return words;
}

[[noreturn]] void execute(std::vector<std::string> words) {
    std::vector<char*> pointers{const_cast<char*>(env)};
    for (std::string& word : words) pointers.push_back(word.data());
    pointers.push_back(nullptr);
    ::execv(env, pointers.data());
    ::_exit(126);
}

int waitForEnd(pid_t child) {
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

} // namespace

TerminalResult runTerminal(const TerminalOptions& options, const std::vector<std::string>& arguments) {
    Shell::Result result = Shell::run(env, wordsFor(options, arguments), patienceSeconds);
    return {result.status, std::move(result.out), std::move(result.err)};
}

TerminalScreen::TerminalScreen(const TerminalOptions& options, const std::vector<std::string>& arguments,
                               int columns) {
    terminal_ = ::posix_openpt(O_RDWR | O_NOCTTY);
    ::grantpt(terminal_);
    ::unlockpt(terminal_);
    const std::string name = ::ptsname(terminal_);
    winsize size{
        .ws_row = 40, .ws_col = static_cast<unsigned short>(columns), .ws_xpixel = 0, .ws_ypixel = 0};
    const int line = ::open(name.c_str(), O_RDWR | O_NOCTTY);
    ::ioctl(line, TIOCSWINSZ, &size);
    child_ = ::fork();
    if (child_ == 0) {
        ::setsid();
        ::ioctl(line, TIOCSCTTY, 0);
        for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) ::dup2(line, stream);
        ::close(terminal_);
        // Whoever runs the tests in the background may have these ignored.
        for (const int key : {SIGHUP, SIGINT, SIGQUIT}) ::signal(key, SIG_DFL);
        execute(wordsFor(options, arguments));
    }
    ::close(line);
}

TerminalScreen::~TerminalScreen() {
    if (child_ > 0) {
        ::kill(child_, SIGKILL);
        waitForEnd(child_);
    }
    ::close(terminal_);
}

void TerminalScreen::type(const std::string& keys) {
    if (::write(terminal_, keys.data(), keys.size()) < 0) shown_ += "<the terminal is gone>";
}

bool TerminalScreen::readMore() {
    pollfd end{.fd = terminal_, .events = POLLIN, .revents = 0};
    if (::poll(&end, 1, patienceSeconds * 1000) <= 0) return false;
    char buffer[65536];
    const ssize_t got = ::read(terminal_, buffer, sizeof buffer);
    if (got > 0) shown_.append(buffer, static_cast<size_t>(got));
    return got > 0;
}

std::string TerminalScreen::waitFor(const std::string& text) {
    while (!std::string_view(shown_).contains(text) && readMore()) {
    }
    return shown_;
}

TerminalResult TerminalScreen::finish() {
    while (readMore()) {
    }
    TerminalResult result;
    result.status = waitForEnd(child_);
    child_ = -1;
    std::erase(shown_, '\r');
    result.out = shown_;
    return result;
}

} // namespace loftmere::test
