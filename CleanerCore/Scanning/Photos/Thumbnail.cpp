#include "CleanerCore/Scanning/Photos/Thumbnail.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

namespace loftmere {

namespace {

using namespace std::string_view_literals;

struct Signature {
    ImageKind kind;
    size_t offset;
    std::string_view bytes;
};

// clang-format off
constexpr std::array<Signature, 23> signatures{{
    {ImageKind::jpeg, 0, "\xFF\xD8\xFF"sv},
    {ImageKind::png, 0, "\x89PNG\r\n\x1A\n"sv},
    {ImageKind::tiff, 0, "II*\0"sv},
    {ImageKind::tiff, 0, "MM\0*"sv},
    {ImageKind::tiff, 0, "II+\0"sv}, // the form with 64-bit offsets
    {ImageKind::tiff, 0, "MM\0+"sv},
    {ImageKind::webp, 8, "WEBP"sv}, // in a RIFF container
    {ImageKind::heif, 4, "ftypheic"sv},
    {ImageKind::heif, 4, "ftypheix"sv},
    {ImageKind::heif, 4, "ftypheim"sv},
    {ImageKind::heif, 4, "ftypheis"sv},
    {ImageKind::heif, 4, "ftyphevc"sv},
    {ImageKind::heif, 4, "ftyphevx"sv},
    {ImageKind::heif, 4, "ftyphevm"sv},
    {ImageKind::heif, 4, "ftyphevs"sv},
    {ImageKind::heif, 4, "ftypmif1"sv},
    {ImageKind::heif, 4, "ftypmif2"sv},
    {ImageKind::heif, 4, "ftypmsf1"sv},
    {ImageKind::heif, 4, "ftypmiaf"sv},
    {ImageKind::heif, 4, "ftypavif"sv},
    {ImageKind::heif, 4, "ftypavis"sv},
    {ImageKind::gif, 0, "GIF87a"sv},
    {ImageKind::gif, 0, "GIF89a"sv},
}};
// clang-format on

constexpr size_t signatureEnd = 16;

bool matches(const Signature& signature, std::string_view start) {
    return start.size() >= signature.offset && start.substr(signature.offset).starts_with(signature.bytes);
}

// What a file is by its first bytes, whatever its name; absent for anything that is not decoded.
std::optional<ImageKind> kindOf(const RegularFile& file) {
    std::array<std::byte, signatureEnd> start{};
    const size_t got = file.read(0, start).value_or(0);
    const std::string_view text(reinterpret_cast<const char*>(start.data()), got);
    const auto* found =
        std::ranges::find_if(signatures, [&](const Signature& s) { return matches(s, text); });
    if (found == signatures.end()) return std::nullopt;
    return found->kind;
}

constexpr size_t exifHeaderSize = 8;
constexpr size_t exifEntrySize = 12;
constexpr uint32_t orientationTag = 0x0112;
constexpr uint32_t shortType = 3;

// Numbers of an Exif block in either byte order. Beyond the end of the block they are 0.
class ExifReader {
public:
    explicit ExifReader(std::span<const uint8_t> bytes)
        : bytes_(bytes), bigEndian_(!bytes.empty() && bytes[0] == 'M') {}

    uint32_t number(size_t offset, size_t size) const {
        if (offset > bytes_.size() || bytes_.size() - offset < size) return 0;
        uint32_t value = 0;
        for (size_t i = 0; i < size; ++i)
            value = value << 8 | bytes_[offset + (bigEndian_ ? i : size - 1 - i)];
        return value;
    }

private:
    std::span<const uint8_t> bytes_;
    bool bigEndian_;
};

} // namespace

ThumbnailResult readThumbnail(const RegularFile& file, const FS::CancelCheck& isCancelled) {
    const auto kind = kindOf(file);
    if (!kind) return std::unexpected(NoThumbnail::noPicture);
    if (*kind == ImageKind::jpeg) return jpegThumbnail(file, isCancelled);
    return vipsThumbnail(file, *kind, isCancelled);
}

int exifOrientation(std::span<const uint8_t> exif) {
    const ExifReader reader(exif);
    if (exif.size() < exifHeaderSize || reader.number(2, 2) != 42) return uprightOrientation;
    const size_t directory = reader.number(4, 4);
    const size_t count = reader.number(directory, 2);
    for (size_t i = 0; i < count; ++i) {
        const size_t entry = directory + 2 + i * exifEntrySize;
        if (reader.number(entry, 2) != orientationTag || reader.number(entry + 2, 2) != shortType) continue;
        const uint32_t value = reader.number(entry + 8, 2);
        return value >= 1 && value <= lastOrientation ? int(value) : uprightOrientation;
    }
    return uprightOrientation;
}

} // namespace loftmere
