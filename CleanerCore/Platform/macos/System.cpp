#include "CleanerCore/Platform/System.h"

#include "CleanerCore/Platform/posix/SystemParts.h"

#include <fcntl.h>
#include <sys/event.h>

namespace loftmere {

namespace {

constexpr AdminCommand commands[] = {
    {"decode_base64", "/usr/bin/base64 -D"},
    {"working_folder", "/bin/pwd -P"},
    {"remove", "/bin/rm -rf --"},
    {"kill_process", "/bin/kill"},
    {"bootout", "/bin/launchctl bootout system"},
    {"purge", "/usr/sbin/purge"},
    {"periodic_daily", "/usr/sbin/periodic daily"},
    {"periodic_weekly", "/usr/sbin/periodic weekly"},
    {"periodic_monthly", "/usr/sbin/periodic monthly"},
    {"rebuild_spotlight", "/usr/bin/mdutil -E /"},
    {"flush_dns", "/usr/bin/dscacheutil -flushcache; /usr/bin/killall -HUP mDNSResponder"},
};

// The program's own bundle first, then the folders of package managers, which are on no default search path.
constexpr std::string_view libraries[] = {
    "@rpath/{name}.{version}.dylib",
    "/opt/homebrew/lib/{name}.{version}.dylib",
    "/usr/local/lib/{name}.{version}.dylib",
    "/opt/local/lib/{name}.{version}.dylib",
};

} // namespace

std::span<const AdminCommand> adminCommands() {
    return commands;
}

std::span<const std::string_view> libraryPaths() {
    return libraries;
}

PipeEnds makePipe() {
    int ends[2];
    if (::pipe(ends) != 0) return {};
    // A child started in between gets neither end, because POSIX_SPAWN_CLOEXEC_DEFAULT is set for all of
    // them.
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
