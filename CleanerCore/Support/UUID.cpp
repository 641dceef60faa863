#include "CleanerCore/Support/UUID.h"

#include <fmt/format.h>
#include <openssl/rand.h>

#include <array>
#include <random>

namespace loftmere {

namespace {

using Bytes = std::array<unsigned char, 16>;

Bytes randomBytes() {
    Bytes bytes{};
    if (RAND_bytes(bytes.data(), static_cast<int>(bytes.size())) == 1) return bytes;
    std::random_device device; // the system's own source, should the library refuse
    for (unsigned char& byte : bytes) byte = static_cast<unsigned char>(device());
    return bytes;
}

} // namespace

std::string newUUID() {
    Bytes bytes = randomBytes();
    bytes[6] = static_cast<unsigned char>((bytes[6] & 0x0F) | 0x40); // version 4: random
    bytes[8] = static_cast<unsigned char>((bytes[8] & 0x3F) | 0x80);
    std::string text;
    for (size_t i = 0; i < bytes.size(); ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
        text += fmt::format("{:02X}", bytes[i]);
    }
    return text;
}

} // namespace loftmere
