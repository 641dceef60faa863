#pragma once

#include "CleanerCore/Platform/Place.h"
#include "CleanerCore/Support/Result.h"

#include <optional>
#include <string>

// What only the system can do about files that a cloud provider keeps in sync. May block: never on the main
// thread.
namespace loftmere::CloudStorage {

// Deletes the item in coordination with others who use it. Where the system has no such coordination, or it
// fails, this is the plain removal. When both fail, the coordination's failure is the one reported.
Status coordinatedRemove(const Place& place);

// Whether the item's content is on this machine; absent where the system keeps no such status.
std::optional<bool> isContentLocal(const std::string& path);

// Releases the local copy of a file in iCloud Drive.
Status evict(const std::string& path);

// Whether this system can do that at all. The failure is the one that `evict` would report.
Status mayEvict();

} // namespace loftmere::CloudStorage
