#include "CleanerCore/Platform/Terminal.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstring>

namespace loftmere {

namespace {

constexpr std::string_view eraseLine = "\r\x1B[K";
constexpr int stopSignals[]{SIGINT, SIGTERM, SIGHUP};

// What the signal handler reads and writes.
volatile std::sig_atomic_t lineIsShown = 0;
volatile std::sig_atomic_t notedSignal = 0;
const char* volatile firstAnswer = nullptr;
const char* volatile nextAnswer = nullptr;

int descriptorOf(StandardStream stream) {
    switch (stream) {
    case StandardStream::input: return STDIN_FILENO;
    case StandardStream::output: return STDOUT_FILENO;
    case StandardStream::error: return STDERR_FILENO;
    }
    return -1;
}

void onStop(int signal) {
    const int error = errno;
    if (lineIsShown) (void)::write(STDERR_FILENO, eraseLine.data(), eraseLine.size());
    const char* answer = notedSignal == 0 ? firstAnswer : nextAnswer;
    if (answer == nullptr) ::_exit(128 + signal);
    if (notedSignal == 0) notedSignal = signal;
    (void)::write(STDERR_FILENO, answer, std::strlen(answer));
    errno = error;
}

void handle(int signal, void (*handler)(int)) {
    struct sigaction action{};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    ::sigaction(signal, &action, nullptr);
}

} // namespace

void prepareStandardStreams() {
    for (int fd = ::open("/dev/null", O_RDONLY); fd >= 0; fd = ::open("/dev/null", O_RDONLY)) {
        if (fd <= STDERR_FILENO) continue;
        ::close(fd);
        break;
    }
    // A handler instead of SIG_IGN, because children would inherit that.
    handle(SIGPIPE, [](int) {});
    handle(SIGCHLD, SIG_DFL);
}

bool isTerminal(StandardStream stream) {
    return ::isatty(descriptorOf(stream)) == 1;
}

std::optional<int> terminalColumns(StandardStream stream) {
    winsize size{};
    if (::ioctl(descriptorOf(stream), TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return std::nullopt;
    return size.ws_col;
}

Written writeText(StandardStream stream, std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = ::write(descriptorOf(stream), text.data(), text.size());
        if (written < 0 && errno != EINTR) return errno == EPIPE ? Written::readerGone : Written::failed;
        if (written > 0) text.remove_prefix(static_cast<size_t>(written));
    }
    return Written::all;
}

std::string readLine() {
    std::string line;
    char c = 0;
    while (true) {
        const ssize_t got = ::read(STDIN_FILENO, &c, 1);
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0 || c == '\n') return line;
        line += c;
    }
}

std::optional<std::string> currentFolder() {
    char path[PATH_MAX];
    if (::getcwd(path, sizeof path) == nullptr) return std::nullopt;
    return path;
}

void drawLiveLine(std::string_view text) {
    lineIsShown = 1;
    writeText(StandardStream::error, std::string(eraseLine) + std::string(text));
}

void eraseLiveLine() {
    if (!lineIsShown) return;
    writeText(StandardStream::error, eraseLine);
    lineIsShown = 0;
}

void endOnStopSignals() {
    for (const int signal : stopSignals) {
        struct sigaction action{};
        const bool isIgnored = ::sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
        if (!isIgnored) handle(signal, onStop);
    }
}

void noteStopSignals(const char* first, const char* again) {
    nextAnswer = again;
    firstAnswer = first;
}

std::optional<int> notedStop() {
    if (notedSignal == 0) return std::nullopt;
    return 128 + notedSignal;
}

} // namespace loftmere
