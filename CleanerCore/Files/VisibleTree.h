#pragma once

#include "CleanerCore/Platform/TreeWalk.h"

#include <functional>
#include <string>
#include <string_view>

// The tree of files as a user sees it.
namespace loftmere {

// Whether a folder of this name is a package: shown and handled as one thing, such as an application, a photo
// library or a document that is stored as a folder. Judged by the extension, in any case.
bool isPackageName(std::string_view name);

// Visits what a user sees below `root`, as walkTree does, but without hidden entries and without the inside
// of packages: a package is one entry. Entries whose names are not valid UTF-8 are left out as well, since
// they are only ever handled as part of their folder.
bool walkVisibleTree(const std::string& root, const std::function<WalkStep(const WalkEntry&)>& visit);

} // namespace loftmere
