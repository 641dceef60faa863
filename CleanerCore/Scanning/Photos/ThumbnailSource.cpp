#include "CleanerCore/Scanning/Photos/ThumbnailSource.h"

#include "CleanerCore/Scanning/Photos/ImageKind.h"
#include "CleanerCore/Scanning/Photos/JpegThumbnail.h"
#include "CleanerCore/Scanning/Photos/VipsThumbnail.h"

#include <array>

namespace loftmere {

std::optional<Thumbnail> readThumbnail(const RegularFile& file, const FS::CancelCheck& isCancelled) {
    std::array<std::byte, imageKindBytes> start{};
    const size_t got = file.read(0, start).value_or(0);
    const auto kind = imageKind(std::span(start).first(got));
    if (!kind) return std::nullopt;
    if (*kind == ImageKind::jpeg) return jpegThumbnail(file, isCancelled);
    return vipsThumbnail(file, *kind, isCancelled);
}

} // namespace loftmere
