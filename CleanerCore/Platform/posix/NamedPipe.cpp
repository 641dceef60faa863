#include "CleanerCore/Platform/NamedPipe.h"

#include "CleanerCore/Platform/FileDescriptor.h"

#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <signal.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <string_view>
#include <thread>

namespace loftmere {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr short gone = POLLERR | POLLHUP | POLLNVAL; // at the writing end: nobody reads any more

// While it lives, a write to a broken pipe on this thread fails instead of ending the program.
class BrokenPipeGuard {
public:
    BrokenPipeGuard() {
        sigemptyset(&brokenPipe_);
        sigaddset(&brokenPipe_, SIGPIPE);
        wasPending_ = isPending();
        ::pthread_sigmask(SIG_BLOCK, &brokenPipe_, &former_);
    }
    ~BrokenPipeGuard() {
        // Our own signal must be consumed before the signal is unblocked.
        int taken = 0;
        if (!wasPending_ && isPending()) ::sigwait(&brokenPipe_, &taken);
        ::pthread_sigmask(SIG_SETMASK, &former_, nullptr);
    }
    BrokenPipeGuard(const BrokenPipeGuard&) = delete;
    BrokenPipeGuard& operator=(const BrokenPipeGuard&) = delete;

private:
    static bool isPending() {
        sigset_t pending;
        sigemptyset(&pending);
        ::sigpending(&pending);
        return sigismember(&pending, SIGPIPE) == 1;
    }

    sigset_t brokenPipe_;
    sigset_t former_;
    bool wasPending_ = false;
};

FileDescriptor openPipe(const std::string& path, int direction) {
    return FileDescriptor(::open(path.c_str(), direction | O_NONBLOCK | O_CLOEXEC));
}

int millisecondsLeft(Clock::time_point deadline, milliseconds atMost) {
    const auto left = std::chrono::ceil<milliseconds>(deadline - Clock::now());
    return static_cast<int>(std::clamp(left, milliseconds(0), atMost).count());
}

bool writeLine(int requests, std::string_view line, Clock::time_point deadline) {
    const BrokenPipeGuard guard;
    while (!line.empty()) {
        const ssize_t put = ::write(requests, line.data(), line.size());
        if (put >= 0)
            line.remove_prefix(static_cast<size_t>(put));
        else if (errno != EAGAIN && errno != EINTR)
            return false;
        if (line.empty()) break;
        if (Clock::now() >= deadline) return false;
        pollfd room{requests, POLLOUT, 0};
        ::poll(&room, 1, millisecondsLeft(deadline, milliseconds(200)));
    }
    return true;
}

// Reads what the other process writes until enough lines have come.
class ReplyReader {
public:
    ReplyReader(int replies, int requests, size_t stale)
        : replies_(replies), requests_(requests), stale_(stale) {}

    void readUntil(Clock::time_point deadline) {
        while (!complete() && Clock::now() < deadline) {
            std::array<pollfd, 2> watched{pollfd{replies_, POLLIN, 0}, pollfd{requests_, 0, 0}};
            ::poll(watched.data(), watched.size(), millisecondsLeft(deadline, milliseconds(200)));
            if (take() > 0) continue;
            if ((watched[1].revents & gone) != 0) break;
            // An end of file before the reply means that the next writer has not come yet. Some systems
            // report that at once, again and again.
            if (watched[0].revents != 0) std::this_thread::sleep_for(milliseconds(5));
        }
        if (complete()) drain();
    }

    size_t linesRead() const { return std::min(lineCount(), stale_ + 1); }

    std::optional<std::string> reply() const {
        if (!complete()) return std::nullopt;
        size_t start = 0;
        for (size_t i = 0; i < stale_; ++i) start = text_.find('\n', start) + 1;
        return text_.substr(start, text_.find('\n', start) - start);
    }

private:
    size_t lineCount() const { return static_cast<size_t>(std::ranges::count(text_, '\n')); }
    bool complete() const { return lineCount() > stale_; }

    // As read(2). A reply without a line end at the end of the file counts too.
    ssize_t take() {
        std::array<char, 8192> block;
        const ssize_t got = ::read(replies_, block.data(), block.size());
        if (got > 0) text_.append(block.data(), static_cast<size_t>(got));
        if (got == 0 && !text_.empty() && text_.back() != '\n') text_ += '\n';
        return got;
    }

    // Whatever follows the first line must be gone when the next question is asked.
    void drain() {
        const auto deadline = Clock::now() + milliseconds(500);
        std::array<char, 8192> block;
        while (Clock::now() < deadline) {
            const ssize_t got = ::read(replies_, block.data(), block.size());
            if (got == 0 || (got < 0 && errno != EAGAIN && errno != EINTR)) return;
            pollfd more{replies_, POLLIN, 0};
            if (got < 0) ::poll(&more, 1, millisecondsLeft(deadline, milliseconds(200)));
        }
    }

    int replies_;
    int requests_;
    size_t stale_;
    std::string text_;
};

} // namespace

Status makeNamedPipe(const std::string& path, uint32_t mode) {
    if (::mkfifo(path.c_str(), static_cast<mode_t>(mode)) != 0)
        return failed(Failure::posix(errno, "make", path));
    return {};
}

PipeAnswer askThroughPipes(const PipeQuestion& question) {
    const auto deadline = Clock::now() + std::chrono::duration_cast<Clock::duration>(
                                             std::chrono::duration<double>(question.timeout));
    // Because it does not block, this fails when nobody reads.
    const FileDescriptor requests = openPipe(question.requests, O_WRONLY);
    if (!requests) return {};
    // Before the question is written, because the other process may be blocked by a stale reply that nobody
    // reads.
    const FileDescriptor replies = openPipe(question.replies, O_RDONLY);
    if (!replies) return {};
    if (!writeLine(requests.get(), question.line + "\n", deadline)) return {};
    ReplyReader reader(replies.get(), requests.get(), question.stale);
    reader.readUntil(deadline);
    return {.asked = true, .linesRead = reader.linesRead(), .reply = reader.reply()};
}

} // namespace loftmere
