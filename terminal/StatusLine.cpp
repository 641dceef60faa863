#include "terminal/StatusLine.h"

#include "terminal/Layout.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <csignal>
#include <cstring>

namespace loftmere {

namespace {

constexpr std::string_view eraseLine = "\r\x1B[K";
constexpr int interruptedStatus = 130;

// What the signal's handler must know; it may do no more than read these.
volatile std::sig_atomic_t lineIsShown = 0;
const char* volatile lastWords = nullptr;

void onInterrupt(int) {
    if (lineIsShown) (void)::write(STDERR_FILENO, eraseLine.data(), eraseLine.size());
    if (const char* words = lastWords) (void)::write(STDERR_FILENO, words, std::strlen(words));
    ::_exit(interruptedStatus);
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
    writeAll(STDERR_FILENO, std::string(eraseLine) + fitting);
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
    ::sigaction(SIGINT, &action, nullptr);
}

void sayWhenInterrupted(const char* message) {
    lastWords = message;
}

} // namespace loftmere
