#include "CleanerCore/Scanning/Duplicates/Hasher64.h"

#include "CleanerCore/Platform/RegularFile.h"
#include "CleanerCore/Support/Crypto.h"

#include <algorithm>
#include <limits>
#include <vector>

namespace loftmere::Hasher64 {

namespace {

constexpr int64_t blockLength = 128 * 1024; // stays in the processor's cache between reading and hashing
constexpr int64_t stepLength = 2 * 1024 * 1024;
constexpr int64_t stepsAhead = 4; // requests that a disk works on at once

// While one step is hashed, the next few are on their way from the disk: at the beginning all of them, then
// one more after each step.
void expectNext(const RegularFile& file, int64_t offset, int64_t end) {
    if (offset % stepLength != 0) return;
    const int64_t first = offset == 0 ? 0 : offset + (stepsAhead - 1) * stepLength;
    for (int64_t at = first; at < std::min(end, offset + stepsAhead * stepLength); at += stepLength) {
        file.expect(at, std::min(stepLength, end - at));
    }
}

} // namespace

std::optional<std::string> hash(const std::string& path, std::optional<int64_t> limit) {
    const auto file = RegularFile::open(path);
    if (!file) return std::nullopt;
    Sha256 digest;
    std::vector<std::byte> buffer(blockLength);
    const int64_t end = limit.value_or(std::numeric_limits<int64_t>::max());
    const int64_t expectedEnd = std::min(end, file->size());
    int64_t offset = 0;
    while (offset < end) {
        expectNext(*file, offset, expectedEnd);
        const std::span<std::byte> block(buffer.data(),
                                         static_cast<size_t>(std::min(end - offset, blockLength)));
        const auto got = file->read(offset, block);
        if (!got) return std::nullopt;
        digest.update(block.first(*got));
        if (*got < block.size()) break;
        offset += static_cast<int64_t>(*got);
    }
    return digest.finish();
}

} // namespace loftmere::Hasher64
