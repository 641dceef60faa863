#include "terminal/StatusLine.h"

#include "terminal/Layout.h"
#include "terminal/Session.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>

namespace loftmere {

namespace {

constexpr std::string_view eraseLine = "\r\x1B[K";
constexpr int interruptedStatus = static_cast<int>(ExitStatus::interrupted);

// What the signal's handler must know and tell.
volatile std::sig_atomic_t lineIsShown = 0;
volatile std::sig_atomic_t isNoted = 0;
const char* volatile firstAnswer = nullptr;

void onInterrupt(int) {
    const int error = errno;
    if (lineIsShown) (void)::write(STDERR_FILENO, eraseLine.data(), eraseLine.size());
    const char* answer = firstAnswer;
    if (answer == nullptr || isNoted) ::_exit(interruptedStatus);
    isNoted = 1;
    (void)::write(STDERR_FILENO, answer, std::strlen(answer));
    errno = error;
}

int errorWidth() {
    winsize size{};
    return ::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

} // namespace

void StatusLine::draw(const std::string& text) {
    if (!console_.isLive()) return;
    lineIsShown = 1;
    shown_ = true;
    // The last column stays free: some terminals wrap as soon as it is written.
    const std::string fitting = cutEnd(text, errorWidth() - 1, console_.glyphs().ellipsis);
    writeAll(STDERR_FILENO, std::string(eraseLine) + console_.forError(fitting));
}

void StatusLine::erase() {
    if (!shown_) return;
    writeAll(STDERR_FILENO, eraseLine);
    shown_ = false;
    lineIsShown = 0;
}

void endOnInterrupt() {
    struct sigaction action{};
    if (::sigaction(SIGINT, nullptr, &action) == 0 && action.sa_handler == SIG_IGN) return;
    action = {};
    action.sa_handler = onInterrupt;
    action.sa_flags = SA_RESTART;
    ::sigaction(SIGINT, &action, nullptr);
}

void noteInterrupt(const char* message) {
    firstAnswer = message;
}

bool wasInterrupted() {
    return isNoted != 0;
}

} // namespace loftmere
