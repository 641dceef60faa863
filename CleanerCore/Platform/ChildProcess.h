#pragma once

#include "CleanerCore/Platform/FileDescriptor.h"
#include "CleanerCore/Support/Result.h"

#include <sys/types.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace loftmere {

// A regular file, links followed, that this process may execute. Any thread.
bool isExecutableFile(const std::string& path);

// The id of this process.
int32_t currentProcessID();

// One child process and what it writes to its standard output and error. One thread uses it, and all its
// waiting is done on that thread. Any number of children may be started at once from many threads.
class ChildProcess {
public:
    using Deadline = std::chrono::steady_clock::time_point;

    // How much of one stream is kept. The rest is thrown away, and the output then counts as incomplete.
    static constexpr size_t outputLimit = size_t{256} << 20;

    // Starts a program. It gets this process's environment, working folder and standard input, its outputs
    // are pipes to us, no other descriptor is open in it, and no signal is blocked or ignored. Fails with the
    // system's reason when the program cannot be executed.
    static Result<std::unique_ptr<ChildProcess>> start(const std::string& executable,
                                                       const std::vector<std::string>& arguments);

    // A child that still runs or writes is left to itself. A thread reads what it still writes, so that a
    // broken pipe kills nobody, and collects the child's status when it ends.
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    // Wait until the child has ended, and until both outputs have ended too, which somebody who inherited
    // them can delay. Both read output while they wait, and answer false when the deadline comes first.
    bool waitForEnd(Deadline deadline);
    bool waitForOutput(Deadline deadline);

    void terminate(); // asks with SIGTERM
    void kill();      // SIGKILL

    // Of an ended child: its exit status, or the number of the signal that ended it.
    int32_t status() const { return status_; }

    // What the child has written so far, any bytes. Complete when nothing had to be thrown away.
    const std::string& out() const { return out_.bytes; }
    const std::string& err() const { return err_.bytes; }
    bool outputIsComplete() const { return !out_.overflowed && !err_.overflowed; }

private:
    struct Stream {
        FileDescriptor source; // none when the stream has ended
        std::string bytes;
        bool overflowed = false;

        void take();
    };

    ChildProcess(FileDescriptor out, FileDescriptor err);
    bool wait(Deadline deadline, bool forOutput);
    bool outputsEnded() const { return !out_.source && !err_.source; }
    void noteEnd();
    void signal(int number) const;

    pid_t pid_ = -1; // none when the child has ended and its status is known
    int32_t status_ = 0;
    FileDescriptor endNotice_;
    Stream out_;
    Stream err_;
};

} // namespace loftmere
