#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace loftmere {

// A running SHA-256. One thread at a time.
class Sha256 {
public:
    Sha256();
    ~Sha256();
    Sha256(Sha256&&) noexcept;
    Sha256& operator=(Sha256&&) noexcept;

    void update(std::span<const std::byte> data);

    // The digest of all data so far as 64 lower-case hexadecimal digits. Ends the computation.
    std::string finish();

private:
    struct State;
    std::unique_ptr<State> state_;
};

// Standard Base64 with padding, without line breaks. `bytes` has less than 1 GiB.
std::string base64Encoded(std::string_view bytes);

} // namespace loftmere
