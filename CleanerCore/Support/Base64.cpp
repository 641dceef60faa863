#include "CleanerCore/Support/Base64.h"

#include <cstdint>

namespace loftmere {

std::string base64Encoded(std::string_view bytes) {
    constexpr std::string_view digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    for (size_t i = 0; i < bytes.size(); i += 3) {
        const std::string_view group = bytes.substr(i, 3);
        uint32_t bits = 0;
        for (size_t k = 0; k < 3; ++k) {
            bits = bits << 8 | (k < group.size() ? static_cast<unsigned char>(group[k]) : 0U);
        }
        for (size_t k = 0; k < 4; ++k) {
            text += k <= group.size() ? digits[bits >> (18 - 6 * k) & 0x3F] : '=';
        }
    }
    return text;
}

} // namespace loftmere
