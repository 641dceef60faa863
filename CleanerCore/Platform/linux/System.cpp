#include "CleanerCore/Platform/System.h"

#include "CleanerCore/Platform/posix/SystemParts.h"

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace loftmere {

namespace {

// Where there is no counterpart, the command is one that does not exist, and its error is what the user
// reads.
constexpr AdminCommand commands[] = {
    {"decode_base64", "/usr/bin/base64 -d"},
    {"working_folder", "/bin/pwd -P"},
    {"remove", "/bin/rm -rf --"},
    {"kill_process", "/bin/kill"},
    {"bootout", "/bin/launchctl bootout system"},
    {"purge", "/usr/sbin/sysctl -q -w vm.drop_caches=1"}, // clean pages only, nothing unwritten
    {"periodic_daily", "/usr/bin/run-parts /etc/cron.daily"},
    {"periodic_weekly", "/usr/bin/run-parts /etc/cron.weekly"},
    {"periodic_monthly", "/usr/bin/run-parts /etc/cron.monthly"},
    {"rebuild_spotlight", "/usr/bin/updatedb"},
    {"flush_dns", "/usr/bin/resolvectl flush-caches"},
};

constexpr std::string_view libraries[] = {"{name}.so.{version}"};

} // namespace

std::span<const AdminCommand> adminCommands() {
    return commands;
}

std::span<const std::string_view> libraryPaths() {
    return libraries;
}

PipeEnds makePipe() {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) return {};
    return {.reader = FileDescriptor(ends[0]), .writer = FileDescriptor(ends[1])};
}

int closeAllButStandardStreams(posix_spawn_file_actions_t& actions, short& /*flags*/) {
    // Our own are all close-on-exec, but a library's may not be.
    return ::posix_spawn_file_actions_addclosefrom_np(&actions, STDERR_FILENO + 1);
}

FileDescriptor openEndNotice(pid_t child) {
    // By number: only recent C libraries have the function, and not always for C++.
    return FileDescriptor(static_cast<int>(::syscall(SYS_pidfd_open, child, 0)));
}

} // namespace loftmere
