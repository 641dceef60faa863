#pragma once

#include "CleanerCore/Files/Paths.h"
#include "CleanerCore/Support/Result.h"

#include <string>

// Releases local copies of synced files; the cloud keeps the files.
namespace loftmere::CloudEvictor {

// Releases the local copy of a file. Fails with a sentence for the user. Runs tools: never on the main
// thread.
Status evict(const std::string& path, const Paths& paths);

// What certainly keeps the file from being released, with the sentence that `evict` would answer: it is in no
// cloud folder, or there is no tool for it. Touches nothing. Any thread.
Status mayEvict(const std::string& path, const Paths& paths);

} // namespace loftmere::CloudEvictor
