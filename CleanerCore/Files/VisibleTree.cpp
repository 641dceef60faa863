#include "CleanerCore/Files/VisibleTree.h"

#include "CleanerCore/Files/Packages.h"
#include "CleanerCore/Platform/FileFlags.h"
#include "CleanerCore/Support/Text.h"

namespace loftmere {

namespace {

bool isVisible(const WalkEntry& entry) {
    return !entry.name.starts_with('.') && isValidUTF8(entry.name) && !isMarkedHidden(entry.path);
}

} // namespace

bool walkVisibleTree(const std::string& root, const std::function<WalkStep(const WalkEntry&)>& visit) {
    return walkTree(root, [&](const WalkEntry& entry) {
        if (!isVisible(entry)) return WalkStep::skipDescendants;
        const WalkStep step = visit(entry);
        const bool isPackage = entry.type == FileType::directory && isPackageName(entry.name);
        return step == WalkStep::proceed && isPackage ? WalkStep::skipDescendants : step;
    });
}

} // namespace loftmere
