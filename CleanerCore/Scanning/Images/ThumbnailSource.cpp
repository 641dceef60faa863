#include "CleanerCore/Scanning/Images/ThumbnailSource.h"

#include "CleanerCore/Platform/RegularFile.h"
#include "CleanerCore/Scanning/Images/ImageKind.h"
#include "CleanerCore/Scanning/Images/JpegThumbnail.h"
#include "CleanerCore/Scanning/Images/VipsThumbnail.h"

#include <unistd.h>

#include <array>

namespace loftmere {

std::optional<Thumbnail> readThumbnail(const std::string& path, const FS::CancelCheck& isCancelled) {
    const auto fd = openRegularFile(path);
    if (!fd) return std::nullopt;
    std::array<uint8_t, imageKindBytes> start{};
    const ssize_t got = ::pread(fd->get(), start.data(), start.size(), 0);
    if (got <= 0) return std::nullopt;
    const auto kind = imageKind(std::span(start).first(size_t(got)));
    if (!kind) return std::nullopt;
    if (*kind == ImageKind::jpeg) return jpegThumbnail(fd->get(), isCancelled);
    return vipsThumbnail(fd->get(), *kind, isCancelled);
}

} // namespace loftmere
