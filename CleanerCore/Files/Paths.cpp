#include "CleanerCore/Files/Paths.h"

#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Platform/FileContent.h"
#include "CleanerCore/Support/PathText.h"

namespace loftmere {

Paths::Paths(std::string_view home) : home_(standardizedPathText(home)) {}

std::string Paths::lib(std::string_view relative) const {
    return joinPath(joinPath(home_, "Library"), relative);
}

Status Paths::ensureSupportDirs() const {
    migrateLegacySupportDir();
    if (auto made = createDirectories(quarantineDir()); !made) return made;
    return createDirectories(parentPath(agentLogFile()));
}

void Paths::migrateLegacySupportDir() const {
    const std::string legacy = lib("Application Support/Fernhollow");
    if (!FS::exists(legacy) || FS::exists(supportDir())) return;
    (void)createDirectories(parentPath(supportDir()));
    (void)renameExclusively(legacy, supportDir());
}

} // namespace loftmere
