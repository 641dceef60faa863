#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace loftmere::Hasher64 {

// The SHA-256 of a regular file's content, or of its first `limit` bytes, as 64 lower-case hexadecimal
// digits. Absent when the file cannot be opened or read to the end, since a digest of half a file would make
// different files look alike. A final link is followed. FIFOs, devices and cloud placeholders are never
// opened. Takes a fixed amount of memory. Any thread.
std::optional<std::string> hash(const std::string& path, std::optional<int64_t> limit = std::nullopt);

} // namespace loftmere::Hasher64
