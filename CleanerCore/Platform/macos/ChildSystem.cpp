#include "CleanerCore/Platform/posix/ChildSystem.h"

#include <fcntl.h>
#include <sys/event.h>

namespace loftmere {

PipeEnds makePipe() {
    int ends[2];
    if (::pipe(ends) != 0) return {};
    // A child started in between still gets neither: all are started with POSIX_SPAWN_CLOEXEC_DEFAULT.
    for (const int end : ends) ::fcntl(end, F_SETFD, FD_CLOEXEC);
    return {.reader = FileDescriptor(ends[0]), .writer = FileDescriptor(ends[1])};
}

int closeAllButStandardStreams(posix_spawn_file_actions_t& actions, short& flags) {
    flags |= POSIX_SPAWN_CLOEXEC_DEFAULT;
    if (::fcntl(STDIN_FILENO, F_GETFD) < 0) return 0;
    return ::posix_spawn_file_actions_addinherit_np(&actions, STDIN_FILENO);
}

FileDescriptor openEndNotice(pid_t child) {
    FileDescriptor queue(::kqueue());
    if (!queue) return queue;
    struct kevent watch;
    EV_SET(&watch, static_cast<uintptr_t>(child), EVFILT_PROC, EV_ADD, NOTE_EXIT, 0, nullptr);
    if (::kevent(queue.get(), &watch, 1, nullptr, 0, nullptr) != 0) queue.reset();
    return queue;
}

} // namespace loftmere
