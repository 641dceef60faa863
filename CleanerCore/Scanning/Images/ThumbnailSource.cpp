#include "CleanerCore/Scanning/Images/ThumbnailSource.h"

#include "CleanerCore/Platform/RegularFile.h"
#include "CleanerCore/Scanning/Images/ImageKind.h"
#include "CleanerCore/Scanning/Images/JpegThumbnail.h"
#include "CleanerCore/Scanning/Images/VipsThumbnail.h"

#include <array>

namespace loftmere {

std::optional<Thumbnail> readThumbnail(const std::string& path, const FS::CancelCheck& isCancelled) {
    const auto file = RegularFile::open(path);
    if (!file) return std::nullopt;
    std::array<std::byte, imageKindBytes> start{};
    const size_t got = file->read(0, start).value_or(0);
    if (got == 0) return std::nullopt;
    const auto kind = imageKind(std::span(start).first(got));
    if (!kind) return std::nullopt;
    if (*kind == ImageKind::jpeg) return jpegThumbnail(file->descriptor(), isCancelled);
    return vipsThumbnail(file->descriptor(), *kind, isCancelled);
}

} // namespace loftmere
