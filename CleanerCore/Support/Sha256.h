#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string>

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

} // namespace loftmere
