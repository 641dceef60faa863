#pragma once

#include "CleanerCore/Support/Result.h"

#include <array>
#include <string>
#include <string_view>

// What is different about files that a cloud provider keeps in sync: a removal here is one on all the user's
// machines, and the provider may bring back what was just removed.
namespace loftmere::CloudFiles {

// "{home}/Library/Mobile Documents" and "{home}/Library/CloudStorage".
std::array<std::string, 2> syncRoots(const std::string& home);

// Whether the path, normalised, is a sync root or lies below one. Any thread.
bool isSynced(const std::string& path, const std::string& home);

// "iCloud Drive", "Dropbox", "GoogleDrive", ...; "your cloud drive" where the path does not tell. Any thread.
std::string providerName(const std::string& path, const std::string& home);

// Whether the file's content is held in the cloud only. Where the system does not know, a file that is not
// there counts as such.
bool isDataless(const std::string& path);

// Removes a synced item in step with its provider, trying up to `attempts` times (at least once) with growing
// pauses (0.25 seconds, doubled each time), and with it the placeholder that an offloaded file leaves. Fails
// with the last error. Sleeps on the calling thread.
Status remove(const std::string& path, int attempts);

} // namespace loftmere::CloudFiles
