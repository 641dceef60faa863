#pragma once

#include "CleanerCore/Support/Date.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Reads what outside tools and foreign files say. Each function takes any bytes, and leaves out what it does
// not understand. These are also the fuzzers' ways in. Any thread.
namespace loftmere::ForeignText {

// The identifiers of the devices that "xcrun simctl list devices -j" prints.
std::vector<std::string> simulatorIdentifiers(const std::string& output);

// The bytes that Docker can reclaim, by its type of data, from what "docker system df --format '{{json .}}'"
// prints.
std::map<std::string, int64_t> reclaimableSizes(const std::string& output);

// The bytes that Docker means by a text such as "1.2GB (50%)", in decimal units; 0 for anything else.
int64_t parseSize(std::string_view text);

// What the "Info.plist" of a device backup says.
struct BackupInfo {
    std::optional<std::string> deviceName;
    std::optional<Date> lastBackup;
};
BackupInfo backupInfo(const std::string& propertyList);

} // namespace loftmere::ForeignText
