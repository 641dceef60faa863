#include "tests/Terminal/TerminalRun.h"

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

constexpr int patienceMilliseconds = 60'000;

[[noreturn]] void execute(const TerminalOptions& options, const std::vector<std::string>& arguments) {
    std::vector<std::string> words{LOFTMERE_TERMINAL};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<std::string> variables{"HOME=" + options.home, "PATH=/usr/bin:/bin", "LANG=C.UTF-8",
                                       "TERM=xterm-256color"};
    variables.insert(variables.end(), options.environment.begin(), options.environment.end());
    const auto pointers = [](std::vector<std::string>& texts) {
        std::vector<char*> list;
        for (std::string& text : texts) list.push_back(text.data());
        list.push_back(nullptr);
        return list;
    };
    ::execve(LOFTMERE_TERMINAL, pointers(words).data(), pointers(variables).data());
    ::_exit(126);
}

int waitForEnd(pid_t child) {
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

bool readInto(int descriptor, std::string& text) {
    char buffer[65536];
    const ssize_t got = ::read(descriptor, buffer, sizeof buffer);
    if (got > 0) text.append(buffer, static_cast<size_t>(got));
    return got > 0;
}

} // namespace

TerminalResult runTerminal(const TerminalOptions& options, const std::vector<std::string>& arguments) {
    int out[2];
    int err[2];
    if (::pipe(out) != 0 || ::pipe(err) != 0) return {};
    const pid_t child = ::fork();
    if (child == 0) {
        ::dup2(::open("/dev/null", O_RDONLY), STDIN_FILENO);
        ::dup2(out[1], STDOUT_FILENO);
        ::dup2(err[1], STDERR_FILENO);
        for (const int end : {out[0], out[1], err[0], err[1]}) ::close(end);
        execute(options, arguments);
    }
    ::close(out[1]);
    ::close(err[1]);
    TerminalResult result;
    pollfd ends[2]{{.fd = out[0], .events = POLLIN, .revents = 0},
                   {.fd = err[0], .events = POLLIN, .revents = 0}};
    while ((ends[0].fd >= 0 || ends[1].fd >= 0) && ::poll(ends, 2, patienceMilliseconds) > 0) {
        if (ends[0].revents != 0 && !readInto(out[0], result.out)) ends[0].fd = -1;
        if (ends[1].revents != 0 && !readInto(err[0], result.err)) ends[1].fd = -1;
    }
    ::close(out[0]);
    ::close(err[0]);
    result.status = waitForEnd(child);
    return result;
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
        execute(options, arguments);
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
    return ::poll(&end, 1, patienceMilliseconds) > 0 && readInto(terminal_, shown_);
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
    for (const char c : shown_) {
        if (c != '\r') result.out += c;
    }
    return result;
}

} // namespace loftmere::test
