#include "CleanerCore/Files/FS.h"

#include "CleanerCore/Platform/FileStatus.h"
#include "CleanerCore/Platform/TreeWalk.h"
#include "CleanerCore/Platform/Volume.h"
#include "CleanerCore/Support/PathText.h"
#include "CleanerCore/Support/Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cerrno>

namespace loftmere::FS {

namespace {

bool hasType(const std::string& path, FileType type) {
    const auto status = linkStatus(path);
    return status && status->type == type;
}

// Sorted, for the search.
constexpr auto packageExtensions = std::to_array<std::string_view>({
    "abbu",      // address book archive
    "action",    // automator
    "aplibrary", // photo library
    "app",
    "appex", // extension of an application
    "band",  // music project
    "bundle",
    "caction",     // automator
    "cocatalog",   // photo catalogue
    "component",   // audio unit and the like
    "cosessiondb", // photo session
    "dictionary",
    "docset",        // documentation
    "download",      // of a browser, unfinished
    "dsym",          // debugging symbols
    "fcpbundle",     // film library
    "fcpcache",      // film library
    "git",           // repository without a working copy
    "graffle",       // drawing
    "imovielibrary", // film library
    "imovieproject",
    "imovietheater",        // film library
    "kext",                 // kernel extension
    "key",                  // presentation
    "kth",                  // presentation theme
    "logicx",               // music project
    "lrlibrary",            // photo library
    "mdimporter",           // search plug-in
    "migratedaplibrary",    // photo library
    "migratedphotolibrary", // photo library
    "mpkg",                 // installer
    "musiclibrary",
    "nib",            // user interface
    "numbers",        // spreadsheet
    "oo3",            // outline
    "pages",          // text document
    "photolibrary",   // photo library
    "photoslibrary",  // photo library
    "pkg",            // installer
    "playground",     // source code
    "playgroundbook", // source code
    "plugin",
    "prefpane",    // settings pane
    "pvm",         // virtual machine
    "qlgenerator", // preview plug-in
    "rtfd",        // text document
    "saver",       // screen saver
    "scptd",       // script
    "sketchplugin",
    "sparsebundle", // disk image
    "spotlight",    // search plug-in
    "theater",      // film library
    "tvlibrary",
    "utm",      // virtual machine
    "vmwarevm", // virtual machine
    "vst",      // audio plug-in
    "vst3",     // audio plug-in
    "wdgt",     // widget
    "webbookmark",
    "workflow",     // automator
    "xcarchive",    // archive of an application
    "xcassets",     // pictures of an application
    "xcdatamodeld", // source code
    "xcodeproj",    // source code
    "xcplayground", // source code
    "xcresult",     // test results
    "xctemplate",   // source code
    "xcworkspace",  // source code
    "xpc",          // service of an application
});

static_assert(std::ranges::is_sorted(packageExtensions));

bool isVisible(const WalkEntry& entry) {
    return !entry.name.starts_with('.') && isValidUTF8(entry.name) && !isMarkedHidden(entry.path);
}

} // namespace

bool exists(const std::string& path) {
    return linkStatus(path).has_value();
}

bool isReachable(const std::string& path) {
    const auto status = linkStatus(path);
    return status || (status.error() != ENOENT && status.error() != ENOTDIR);
}

bool isSymlink(const std::string& path) {
    return hasType(path, FileType::symlink);
}

bool isDirectory(const std::string& path) {
    return hasType(path, FileType::directory);
}

std::vector<std::string> children(const std::string& path) {
    std::vector<std::string> paths;
    for (const DirectoryEntry& entry : entries(path)) paths.push_back(joinPath(path, entry.name));
    return paths;
}

std::vector<DirectoryEntry> entries(const std::string& path) {
    auto all = readDirectory(path).value_or(std::vector<DirectoryEntry>{});
    std::erase_if(all, [](const DirectoryEntry& entry) {
        return entry.name == ".DS_Store" || !isValidUTF8(entry.name);
    });
    return all;
}

std::optional<Date> modificationDate(const std::string& path) {
    const auto status = linkStatus(path);
    if (!status) return std::nullopt;
    return status->modified;
}

std::optional<Date> addedToFolderDate(const std::string& path) {
    const auto status = linkStatus(path);
    if (!status) return std::nullopt;
    return status->addedToFolder ? status->addedToFolder : status->created;
}

std::optional<Date> lastUsedDate(const std::string& path) {
    const auto status = linkStatus(path);
    if (!status) return std::nullopt;
    return std::max(status->accessed, status->modified);
}

std::optional<Date> newestModification(const std::string& path, int limit) {
    std::optional<Date> newest = modificationDate(path);
    if (!isDirectory(path)) return newest;
    int seen = 0;
    walkTree(path, [&](const WalkEntry& entry) {
        if (++seen > limit) return WalkStep::stop;
        if (const auto status = entry.status()) newest = std::max(newest, std::optional(status->modified));
        return WalkStep::proceed;
    });
    return newest;
}

int64_t allocatedSize(const std::string& path, const CancelCheck& cancel) {
    const auto status = linkStatus(path);
    if (!status || status->type == FileType::symlink) return 0;
    if (status->type != FileType::directory) return status->allocated;
    return allocatedBelow(path, cancel);
}

std::optional<std::string> volumeID(const std::string& path) {
    const auto status = targetStatus(path);
    if (!status) return std::nullopt;
    return fmt::format("{}", status->device);
}

bool sameVolume(const std::string& a, const std::string& b) {
    const auto volume = volumeID(a);
    return volume && volume == volumeID(b);
}

bool isRemoteVolume(const std::string& path) {
    const VolumeKind kind = volumeKind(path);
    if (kind.isLocal == false) return true;
    return kind.isInternal.has_value() && !*kind.isInternal;
}

std::optional<int64_t> freeSpace(const std::string& path) {
    return importantFreeSpace(path);
}

std::optional<VolumeSpace> volumeSpace(const std::string& path) {
    return loftmere::volumeSpace(path);
}

bool isPackageName(std::string_view name) {
    return std::ranges::binary_search(packageExtensions, asciiLowercased(pathExtension(name)));
}

bool walkVisibleTree(const std::string& root, const std::function<WalkStep(const WalkEntry&)>& visit) {
    return walkTree(root, [&](const WalkEntry& entry) {
        if (!isVisible(entry)) return WalkStep::skipDescendants;
        const WalkStep step = visit(entry);
        const bool isPackage = entry.type == FileType::directory && isPackageName(entry.name);
        return step == WalkStep::proceed && isPackage ? WalkStep::skipDescendants : step;
    });
}

} // namespace loftmere::FS
