#include "CleanerCore/Platform/AdminCommands.h"

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

} // namespace

std::span<const AdminCommand> adminCommands() {
    return commands;
}

} // namespace loftmere
