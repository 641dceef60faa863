#include "CleanerCore/Platform/ChildProcess.h"

#include "CleanerCore/Platform/posix/SystemParts.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>
#include <thread>

extern char** environ;

namespace loftmere {

namespace {

using Clock = std::chrono::steady_clock;

// How often to ask where the system does not report a child's end by itself.
constexpr std::chrono::milliseconds askAgain{50};

// What the child is started with; freed with its owner.
struct SpawnPlan {
    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;

    SpawnPlan() {
        ::posix_spawn_file_actions_init(&actions);
        ::posix_spawnattr_init(&attributes);
    }
    ~SpawnPlan() {
        ::posix_spawn_file_actions_destroy(&actions);
        ::posix_spawnattr_destroy(&attributes);
    }
    SpawnPlan(const SpawnPlan&) = delete;
    SpawnPlan& operator=(const SpawnPlan&) = delete;

    int connect(int out, int err) {
        if (const int error = ::posix_spawn_file_actions_adddup2(&actions, out, STDOUT_FILENO)) return error;
        if (const int error = ::posix_spawn_file_actions_adddup2(&actions, err, STDERR_FILENO)) return error;
        short flags = POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF;
        if (const int error = closeAllButStandardStreams(actions, flags)) return error;
        sigset_t none;
        sigset_t all;
        sigemptyset(&none);
        sigfillset(&all);
        for (const int fixed : {SIGKILL, SIGSTOP}) sigdelset(&all, fixed);
        ::posix_spawnattr_setsigmask(&attributes, &none);
        ::posix_spawnattr_setsigdefault(&attributes, &all);
        return ::posix_spawnattr_setflags(&attributes, flags);
    }
};

// A pipe whose ends cannot be mistaken for the child's standard streams, even when ours are closed. The
// reading end does not block.
Result<PipeEnds> outputPipe(const std::string& executable) {
    PipeEnds ends = makePipe();
    for (FileDescriptor* end : {&ends.reader, &ends.writer}) {
        if (*end && end->get() <= STDERR_FILENO) {
            *end = FileDescriptor(::fcntl(end->get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
        }
        if (!*end) return failed(Failure::posix(errno, "run", executable));
    }
    ::fcntl(ends.reader.get(), F_SETFL, O_NONBLOCK);
    return ends;
}

Result<pid_t> spawn(const std::string& executable, const std::vector<std::string>& arguments, int out,
                    int err) {
    std::vector<char*> words{const_cast<char*>(executable.c_str())};
    for (const std::string& argument : arguments) {
        // With a NUL in it, it would arrive cut short and mean something else.
        if (argument.find('\0') != std::string::npos)
            return failed(Failure::posix(EINVAL, "run", executable));
        words.push_back(const_cast<char*>(argument.c_str()));
    }
    words.push_back(nullptr);
    SpawnPlan plan;
    int error = plan.connect(out, err);
    pid_t pid = -1;
    if (error == 0) {
        error =
            ::posix_spawn(&pid, executable.c_str(), &plan.actions, &plan.attributes, words.data(), environ);
    }
    if (error != 0) return failed(Failure::posix(error, "run", executable));
    return pid;
}

int millisecondsUntil(ChildProcess::Deadline deadline, Clock::duration atMost) {
    const auto left = std::min(deadline - Clock::now(), atMost);
    const auto whole = std::chrono::ceil<std::chrono::milliseconds>(left).count();
    return static_cast<int>(std::max<int64_t>(whole, 0));
}

void swallow(FileDescriptor& source) {
    std::array<char, 65536> block;
    const ssize_t got = ::read(source.get(), block.data(), block.size());
    if (got == 0 || (got < 0 && errno != EINTR && errno != EAGAIN)) source.reset();
}

void clearAway(pid_t pid, FileDescriptor out, FileDescriptor err) {
    while (out || err) {
        std::array<pollfd, 2> watched{pollfd{out.get(), POLLIN, 0}, pollfd{err.get(), POLLIN, 0}};
        ::poll(watched.data(), watched.size(), -1);
        if (watched[0].revents != 0) swallow(out);
        if (watched[1].revents != 0) swallow(err);
    }
    while (pid > 0 && ::waitpid(pid, nullptr, 0) < 0 && errno == EINTR) {
    }
}

} // namespace

int32_t currentProcessID() {
    return ::getpid();
}

bool isExecutableFile(const std::string& path) {
    struct stat status;
    return path.find('\0') == std::string::npos && ::stat(path.c_str(), &status) == 0 &&
           S_ISREG(status.st_mode) && ::faccessat(AT_FDCWD, path.c_str(), X_OK, AT_EACCESS) == 0;
}

Result<std::unique_ptr<ChildProcess>> ChildProcess::start(const std::string& executable,
                                                          const std::vector<std::string>& arguments) {
    auto out = outputPipe(executable);
    if (!out) return failed(out.error());
    auto err = outputPipe(executable);
    if (!err) return failed(err.error());
    const auto pid = spawn(executable, arguments, out->writer.get(), err->writer.get());
    if (!pid) return failed(pid.error());
    std::unique_ptr<ChildProcess> child(new ChildProcess(std::move(out->reader), std::move(err->reader)));
    child->pid_ = *pid;
    child->endNotice_ = openEndNotice(*pid);
    return child;
}

ChildProcess::ChildProcess(FileDescriptor out, FileDescriptor err) {
    out_.source = std::move(out);
    err_.source = std::move(err);
}

ChildProcess::~ChildProcess() {
    if (pid_ < 0 && outputsEnded()) return;
    try {
        // Not one of the crew's helpers: a child that stays alive would keep it for ever.
        std::thread(clearAway, pid_, std::move(out_.source), std::move(err_.source)).detach();
    } catch (const std::system_error&) {
        // There is no thread. The pipes break, which is better than waiting here.
    }
}

bool ChildProcess::waitForEnd(Deadline deadline) {
    return wait(deadline, false);
}

bool ChildProcess::waitForOutput(Deadline deadline) {
    return wait(deadline, true);
}

bool ChildProcess::wait(Deadline deadline, bool forOutput) {
    while (true) {
        noteEnd();
        if (pid_ < 0 && (!forOutput || outputsEnded())) return true;
        if (Clock::now() >= deadline) return false;
        const bool mustAsk = pid_ >= 0 && !endNotice_;
        std::array<pollfd, 3> watched{pollfd{out_.source.get(), POLLIN, 0},
                                      pollfd{err_.source.get(), POLLIN, 0},
                                      pollfd{endNotice_.get(), POLLIN, 0}};
        ::poll(watched.data(), watched.size(),
               millisecondsUntil(deadline, mustAsk ? Clock::duration(askAgain) : std::chrono::hours(1)));
        if (watched[0].revents != 0) out_.take();
        if (watched[1].revents != 0) err_.take();
    }
}

void ChildProcess::Stream::take() {
    std::array<char, 65536> block;
    const ssize_t got = ::read(source.get(), block.data(), block.size());
    if (got == 0 || (got < 0 && errno != EINTR && errno != EAGAIN)) source.reset();
    if (got <= 0) return;
    overflowed = overflowed || bytes.size() + static_cast<size_t>(got) > outputLimit;
    if (!overflowed) bytes.append(block.data(), static_cast<size_t>(got));
}

void ChildProcess::noteEnd() {
    if (pid_ < 0) return;
    int ended = 0;
    const pid_t answer = ::waitpid(pid_, &ended, WNOHANG);
    if (answer == 0 || (answer < 0 && errno == EINTR)) return;
    // When somebody else has collected the child's status, nobody can say that it succeeded.
    if (answer < 0)
        status_ = 1;
    else
        status_ = WIFEXITED(ended) ? WEXITSTATUS(ended) : WTERMSIG(ended);
    pid_ = -1;
    endNotice_.reset();
}

void ChildProcess::terminate() {
    signal(SIGTERM);
}

void ChildProcess::kill() {
    signal(SIGKILL);
}

void ChildProcess::signal(int number) const {
    // The number still belongs to the child: only this object clears it away.
    if (pid_ > 0) ::kill(pid_, number);
}

} // namespace loftmere
