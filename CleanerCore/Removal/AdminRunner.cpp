#include "CleanerCore/Removal/AdminRunner.h"

#include "CleanerCore/Files/FS.h"

namespace loftmere::AdminRunner {

Shell::Result remove(const std::vector<std::string>& paths, PrivilegedSession& session) {
    if (paths.empty()) return {};
    for (const std::string& path : paths) {
        // A daemon that keeps running would hold or write again what is about to go. Whether it ran at all
        // does not matter.
        if (path.starts_with("/Library/LaunchDaemons/") && path.ends_with(".plist")) {
            session.run(PrivilegedSession::Bootout{path});
        }
    }
    return session.run(PrivilegedSession::Remove{paths});
}

bool isGone(const std::string& path, const Shell::Result& result) {
    return result.ok() ? !FS::exists(path) : !FS::isReachable(path);
}

Shell::Result oneShot(const std::string& command, const std::string& purpose, const AdminPrompt& prompt) {
    constexpr double limit = 300;
    return prompt(command, "Ostrel Loftmere: " + purpose, limit);
}

} // namespace loftmere::AdminRunner
