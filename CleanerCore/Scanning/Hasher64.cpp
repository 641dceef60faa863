#include "CleanerCore/Scanning/Hasher64.h"

#include "CleanerCore/Platform/RegularFile.h"
#include "CleanerCore/Support/Sha256.h"

#include <algorithm>
#include <limits>
#include <vector>

namespace loftmere::Hasher64 {

namespace {

constexpr int64_t blockLength = 128 * 1024; // stays in the processor's cache between reading and hashing
constexpr int64_t aheadLength = 2 * 1024 * 1024;

// While one stretch is being hashed, the next is on its way from the disk.
void expectNext(const RegularFile& file, int64_t offset, int64_t remaining) {
    if (offset % aheadLength != 0) return;
    file.expect(offset + aheadLength, std::clamp<int64_t>(remaining - aheadLength, 0, aheadLength));
}

} // namespace

std::optional<std::string> hash(const std::string& path, std::optional<int64_t> limit) {
    const auto file = RegularFile::open(path);
    if (!file) return std::nullopt;
    Sha256 digest;
    std::vector<std::byte> buffer(blockLength);
    int64_t remaining = limit.value_or(std::numeric_limits<int64_t>::max());
    int64_t offset = 0;
    while (remaining > 0) {
        expectNext(*file, offset, remaining);
        const std::span<std::byte> block(buffer.data(),
                                         static_cast<size_t>(std::min(remaining, blockLength)));
        const auto got = file->read(offset, block);
        if (!got) return std::nullopt;
        digest.update(block.first(*got));
        if (*got < block.size()) break;
        offset += static_cast<int64_t>(*got);
        remaining -= static_cast<int64_t>(*got);
    }
    return digest.finish();
}

} // namespace loftmere::Hasher64
