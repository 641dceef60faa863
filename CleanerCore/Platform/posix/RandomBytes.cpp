#include "CleanerCore/Platform/RandomBytes.h"

#include <fmt/format.h>
#include <sys/random.h>
#include <unistd.h>

#include <cstdlib>

namespace loftmere {

std::string randomBytes(size_t count) {
    std::string bytes(count, '\0');
    if (::getentropy(bytes.data(), count) != 0) std::abort();
    return bytes;
}

std::string newUUID() {
    std::string bytes = randomBytes(16);
    bytes[6] = static_cast<char>((bytes[6] & 0x0F) | 0x40); // version 4: random
    bytes[8] = static_cast<char>((bytes[8] & 0x3F) | 0x80);
    std::string text;
    for (size_t i = 0; i < bytes.size(); ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
        text += fmt::format("{:02X}", static_cast<unsigned char>(bytes[i]));
    }
    return text;
}

} // namespace loftmere
