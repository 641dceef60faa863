#include "CleanerCore/Support/UUID.h"

#include <fmt/format.h>
#include <sys/random.h>
#include <unistd.h>

#include <array>
#include <cstdlib>

namespace loftmere {

namespace {

using Bytes = std::array<unsigned char, 16>;

// From the system itself: a library's generator starts up at first use, and what it then holds for each
// thread is not always given back when the program ends meanwhile.
Bytes randomBytes() {
    Bytes bytes{};
    if (::getentropy(bytes.data(), bytes.size()) != 0) std::abort(); // no system is ever out of 16 bytes
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
