#pragma once

#include "CleanerCore/Support/RecordCodec.h"
#include "CleanerCore/Support/Result.h"

#include <optional>
#include <string>

// Whole-file reading and writing of records. Any thread; a reader sees the old file or the new one.
namespace loftmere::JSONStore {

// No list of ours is longer, be it of a million items.
inline constexpr int64_t largestFile = int64_t{1} << 31;

// The parsed file, absent when it is missing, unreadable, malformed or of more than `limit` bytes.
std::optional<Json> loadJson(const std::string& path, int64_t limit = largestFile);

// Writes pretty printed with sorted keys, atomically and durably, and makes the parent folders. On failure
// the old file stands as it was.
Status saveJson(const Json& value, const std::string& path);

// The decoded file; absent on any failure, also when a value has the wrong shape. Nothing is logged.
template <class T> std::optional<T> load(const std::string& path, int64_t limit = largestFile) {
    const auto json = loadJson(path, limit);
    if (!json) return std::nullopt;
    return JsonCodec<T>::decode(*json);
}

template <class T> Status save(const T& value, const std::string& path) {
    return saveJson(JsonCodec<T>::encode(value), path);
}

} // namespace loftmere::JSONStore
