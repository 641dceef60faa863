#include "CleanerCore/Support/Crypto.h"

#include <openssl/evp.h>

#include <array>

namespace loftmere {

struct Sha256::State {
    EVP_MD_CTX* context = EVP_MD_CTX_new();
    State() { EVP_DigestInit_ex(context, EVP_sha256(), nullptr); }
    ~State() { EVP_MD_CTX_free(context); }
    State(const State&) = delete;
    State& operator=(const State&) = delete;
};

Sha256::Sha256() : state_(std::make_unique<State>()) {}
Sha256::~Sha256() = default;
Sha256::Sha256(Sha256&&) noexcept = default;
Sha256& Sha256::operator=(Sha256&&) noexcept = default;

void Sha256::update(std::span<const std::byte> data) {
    EVP_DigestUpdate(state_->context, data.data(), data.size());
}

std::string Sha256::finish() {
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    unsigned int length = 0;
    EVP_DigestFinal_ex(state_->context, digest.data(), &length);
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    for (unsigned int i = 0; i < length; ++i) {
        text += digits[digest[i] >> 4];
        text += digits[digest[i] & 15];
    }
    return text;
}

std::string base64Encoded(std::string_view bytes) {
    std::string text((bytes.size() + 2) / 3 * 4 + 1, '\0'); // the library writes a final NUL
    const int length =
        EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data()),
                        reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<int>(bytes.size()));
    text.resize(static_cast<size_t>(length));
    return text;
}

} // namespace loftmere
