#include "CleanerCore/Files/VisibleTree.h"

#include "CleanerCore/Platform/FileFlags.h"
#include "CleanerCore/Support/PathText.h"
#include "CleanerCore/Support/Text.h"

#include <algorithm>
#include <array>

namespace loftmere {

namespace {

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

} // namespace loftmere
