#include "CleanerCore/Scanning/Photos/ImageKind.h"

#include <algorithm>
#include <array>
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

bool matches(const Signature& signature, std::string_view start) {
    return start.size() >= signature.offset && start.substr(signature.offset).starts_with(signature.bytes);
}

} // namespace

std::optional<ImageKind> imageKind(std::span<const std::byte> start) {
    const std::string_view text(reinterpret_cast<const char*>(start.data()), start.size());
    const auto* found =
        std::ranges::find_if(signatures, [&](const Signature& s) { return matches(s, text); });
    if (found == signatures.end()) return std::nullopt;
    return found->kind;
}

} // namespace loftmere
