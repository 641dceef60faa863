#include "CleanerCore/Files/Paths.h"

#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Platform/FileContent.h"
#include "CleanerCore/Support/PathText.h"

namespace loftmere {

namespace {

void makeAllPrivate(const OpenFolder& folder, FileType type) {
    for (const DirectoryEntry& entry : folder.list().value_or(std::vector<DirectoryEntry>{})) {
        if (entry.type == type && entry.name != "agent.lock") makePrivate(folder.entry(entry.name));
    }
}

// Earlier versions let others read what was in quarantine and in the log. The support folder comes last: once
// it is private, all in it is.
void takeRightsFromOthers(const Paths& paths) {
    if (const auto logs = Place::open(parentPath(paths.agentLogFile()))) makePrivate(*logs);
    const auto place = Place::open(paths.supportDir());
    const auto support =
        place ? place->asFolder() : failed(place.error()); // a link leads to a folder of the user's
    if (!support || !place->status() || (place->status()->mode & 077) == 0) return;
    makeAllPrivate(*support, FileType::regular);
    if (const auto quarantine = support->subfolder(lastPathComponent(paths.quarantineDir()))) {
        for (const DirectoryEntry& entry : quarantine->list().value_or(std::vector<DirectoryEntry>{})) {
            const auto session = quarantine->subfolder(entry.name);
            if (!session) continue;
            makeAllPrivate(*session, FileType::regular);
            makePrivate(session->entry("items"));
        }
        makeAllPrivate(*quarantine, FileType::directory);
    }
    makeAllPrivate(*support, FileType::directory);
    makePrivate(*place);
}

} // namespace

Paths::Paths(std::string_view home) : home_(standardizedPathText(home)) {}

std::string Paths::lib(std::string_view relative) const {
    return joinPath(joinPath(home_, "Library"), relative);
}

Status Paths::ensureSupportDirs() const {
    migrateLegacySupportDir();
    for (const std::string& folder : {supportDir(), quarantineDir(), parentPath(agentLogFile())}) {
        if (auto made = createDirectories(folder); !made) return made;
    }
    takeRightsFromOthers(*this);
    return {};
}

void Paths::migrateLegacySupportDir() const {
    const std::string legacy = lib("Application Support/Fernhollow");
    if (!FS::exists(legacy) || FS::exists(supportDir())) return;
    (void)createDirectories(parentPath(supportDir()), 0755);
    (void)renameExclusively(legacy, supportDir());
}

} // namespace loftmere
