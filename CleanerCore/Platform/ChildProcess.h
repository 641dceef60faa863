#pragma once

#include "CleanerCore/Platform/posix/FileDescriptor.h"
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

    // What one stream may bring; all beyond is thrown away and the output counts as not readable.
    static constexpr size_t outputLimit = size_t{256} << 20;

    // Starts a program. It gets this process's environment, working folder and standard input, its outputs
    // are pipes to us, no other descriptor is open in it, and no signal is blocked or ignored. Fails with the
    // system's reason when the program cannot be executed.
    static Result<std::unique_ptr<ChildProcess>> start(const std::string& executable,
                                                       const std::vector<std::string>& arguments);

    // What still runs or writes by now is left to itself: a thread of its own takes away what is still
    // written, so that nobody is killed by a broken pipe, and clears the ended child away.
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    // Both take in output while they wait and answer false when the deadline comes first: until the child has
    // ended; until both outputs have come to their end too, which somebody who inherited them can put off.
    bool waitForEnd(Deadline deadline);
    bool waitForOutput(Deadline deadline);

    void terminate(); // asks with SIGTERM
    void kill();      // does not ask

    // Of an ended child: its exit status, or the number of the signal that ended it.
    int32_t status() const { return status_; }

    // What came so far, any bytes; complete when nothing had to be thrown away.
    const std::string& out() const { return out_.bytes; }
    const std::string& err() const { return err_.bytes; }
    bool outputIsComplete() const { return !out_.overflowed && !err_.overflowed; }

private:
    struct Stream {
        FileDescriptor source; // none when it has come to its end
        std::string bytes;
        bool overflowed = false;

        void take();
    };

    ChildProcess(FileDescriptor out, FileDescriptor err);
    bool wait(Deadline deadline, bool forOutput);
    bool outputsEnded() const { return !out_.source && !err_.source; }
    void noteEnd();
    void signal(int number) const;

    pid_t pid_ = -1; // none when the child has ended and is cleared away
    int32_t status_ = 0;
    FileDescriptor endNotice_;
    Stream out_;
    Stream err_;
};

} // namespace loftmere
