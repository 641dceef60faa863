#pragma once

#include <cstddef>
#include <optional>
#include <span>

namespace loftmere {

enum class ImageKind { jpeg, png, tiff, webp, heif, gif };

// How many bytes of a file tell its kind.
inline constexpr size_t imageKindBytes = 16;

// What a file is by its first bytes, whatever its name; absent for anything that is not decoded.
std::optional<ImageKind> imageKind(std::span<const std::byte> start);

} // namespace loftmere
