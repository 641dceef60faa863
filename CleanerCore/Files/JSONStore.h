#pragma once

#include "CleanerCore/Files/Paths.h"
#include "CleanerCore/Records/AppConfig.h"
#include "CleanerCore/Support/RecordCodec.h"
#include "CleanerCore/Support/Result.h"

#include <optional>
#include <string>

namespace loftmere {

// Whole-file reading and writing of records. Any thread; a reader sees the old file or the new one.
namespace JSONStore {

// None of our lists is longer, even one of a million items.
inline constexpr int64_t largestFile = int64_t{1} << 31;

// The parsed file. Absent when it is missing, unreadable, malformed or longer than `limit` bytes.
std::optional<Json> loadJson(const std::string& path, int64_t limit = largestFile);

// Writes pretty printed with sorted keys, atomically and durably, and makes the parent folders. On failure
// the old file is unchanged.
Status saveJson(const Json& value, const std::string& path);

// The decoded file. Absent on any failure, also when a value has the wrong shape. Nothing is logged.
template <class T> std::optional<T> load(const std::string& path, int64_t limit = largestFile) {
    const auto json = loadJson(path, limit);
    if (!json) return std::nullopt;
    return JsonCodec<T>::decode(*json);
}

template <class T> Status save(const T& value, const std::string& path) {
    return saveJson(JsonCodec<T>::encode(value), path);
}

} // namespace JSONStore

// The user's settings on disk. No lock: the last writer wins.
class ConfigStore {
public:
    explicit ConfigStore(const Paths& paths) : file_(paths.configFile()) {}

    // All defaults when the file is missing or cannot be decoded. Such a file is left as it is.
    AppConfig load() const { return read().value_or(AppConfig{}); }

    // The same, but fails when there is a file, or may be one, that cannot be read or decoded, so that nobody
    // knows what the user protects. There may be one behind a link that leads nowhere, or in a folder that
    // may not be searched.
    Result<AppConfig> read() const;

    bool isDamaged() const { return !read(); }

    Status save(const AppConfig& config) const;

private:
    std::string file_;
};

} // namespace loftmere
