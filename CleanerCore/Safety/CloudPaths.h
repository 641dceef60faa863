#pragma once

#include "CleanerCore/Files/Paths.h"

#include <array>
#include <string>
#include <vector>

// Which paths a cloud provider keeps in sync, as far as the paths themselves say.

namespace loftmere::CloudFiles {

// "{home}/Library/Mobile Documents" and "{home}/Library/CloudStorage".
std::array<std::string, 2> syncRoots(const std::string& home);

// Whether the path, normalised, is a sync root or lies below one. Any thread.
bool isSynced(const std::string& path, const std::string& home);

// "iCloud Drive", "Dropbox", "GoogleDrive", ...; "your cloud drive" where the path does not say. Any thread.
std::string providerName(const std::string& path, const std::string& home);

} // namespace loftmere::CloudFiles

namespace loftmere::CloudEvictor {

// The folder of iCloud Drive, and the real folders of the other providers. Any thread.
std::vector<std::string> cloudRoots(const Paths& paths);

// Whether the path begins with the folder of iCloud Drive. Any thread.
bool isInICloud(const std::string& path, const Paths& paths);

// Who keeps a path below a cloud root, by its text. Any thread.
std::string provider(const std::string& path, const Paths& paths);

} // namespace loftmere::CloudEvictor
