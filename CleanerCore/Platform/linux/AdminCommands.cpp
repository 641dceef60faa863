#include "CleanerCore/Platform/AdminCommands.h"

namespace loftmere {

namespace {

// Where there is no counterpart, the command is one that is not there, and its error is what is told.
constexpr AdminCommand commands[] = {
    {"decode_base64", "/usr/bin/base64 -d"},
    {"working_folder", "/bin/pwd -P"},
    {"remove", "/bin/rm -rf --"},
    {"kill_process", "/bin/kill"},
    {"bootout", "/bin/launchctl bootout system"},
    {"purge", "/usr/sbin/sysctl -q -w vm.drop_caches=1"}, // clean pages only: what is unwritten stays
    {"periodic_daily", "/usr/bin/run-parts /etc/cron.daily"},
    {"periodic_weekly", "/usr/bin/run-parts /etc/cron.weekly"},
    {"periodic_monthly", "/usr/bin/run-parts /etc/cron.monthly"},
    {"rebuild_spotlight", "/usr/bin/updatedb"},
    {"flush_dns", "/usr/bin/resolvectl flush-caches"},
};

} // namespace

std::span<const AdminCommand> adminCommands() {
    return commands;
}

} // namespace loftmere
