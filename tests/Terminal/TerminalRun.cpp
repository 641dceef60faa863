#include "tests/Terminal/TerminalRun.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <string_view>
#include <utility>

namespace loftmere::test {

namespace {

constexpr int patienceSeconds = 60;
constexpr const char* env = "/usr/bin/env";

// What env is to be given: an environment, the program and its arguments.
Words wordsFor(const std::string& home, const Words& arguments, const Words& environment) {
    Words words{"-i", "HOME=" + home, "PATH=/usr/bin:/bin", "LANG=C.UTF-8", "TERM=xterm-256color"};
    words.insert(words.end(), environment.begin(), environment.end());
    words.emplace_back(LOFTMERE_TERMINAL);
    words.insert(words.end(), arguments.begin(), arguments.end());
    return words;
}

[[noreturn]] void execute(Words words) {
    std::vector<char*> pointers{const_cast<char*>(env)};
    for (std::string& word : words) pointers.push_back(word.data());
    pointers.push_back(nullptr);
    ::execv(env, pointers.data());
    ::_exit(126);
}

// Makes a terminal the controlling one of this process, with all its streams on it.
void moveOnto(int terminal) {
    ::setsid();
    ::ioctl(terminal, TIOCSCTTY, 0);
    for (int stream = 0; stream < 3; ++stream) ::dup2(terminal, stream);
    ::close(terminal);
}

int waitForEnd(pid_t child) {
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

} // namespace

Shell::Result runTerminal(const std::string& home, const Words& arguments, const Words& environment) {
    return Shell::run(env, wordsFor(home, arguments, environment), patienceSeconds);
}

TerminalScreen::TerminalScreen(const std::string& home, const Words& arguments, int columns,
                               const Words& environment) {
    const winsize size{
        .ws_row = 40, .ws_col = static_cast<unsigned short>(columns), .ws_xpixel = 0, .ws_ypixel = 0};
    terminal_ = ::posix_openpt(O_RDWR | O_NOCTTY);
    ::fcntl(terminal_, F_SETFD, FD_CLOEXEC);
    ::grantpt(terminal_);
    ::unlockpt(terminal_);
    // Opened before the fork: where nobody has the other end open, reading would find the end.
    const int shown = ::open(::ptsname(terminal_), O_RDWR | O_NOCTTY);
    ::ioctl(shown, TIOCSWINSZ, &size);
    child_ = ::fork();
    if (child_ != 0) {
        ::close(shown);
        return;
    }
    moveOnto(shown);
    // Whoever runs the tests in the background may have these ignored.
    for (const int key : {SIGHUP, SIGINT, SIGQUIT}) ::signal(key, SIG_DFL);
    execute(wordsFor(home, arguments, environment));
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

void TerminalScreen::signal(int number) const {
    ::kill(child_, number);
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

Shell::Result TerminalScreen::finish() {
    while (readMore()) {
    }
    std::erase(shown_, '\r');
    return {.status = waitForEnd(std::exchange(child_, -1)), .out = shown_, .err = ""};
}

} // namespace loftmere::test
