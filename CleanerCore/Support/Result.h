#pragma once

#include <expected>
#include <memory>
#include <string>
#include <string_view>

namespace loftmere {

// Who numbered a failure's code. `posix` codes are errno values; `cocoa` codes are those that Apple's file
// services use; `loftmere` failures carry no code, only a sentence.
enum class FailureDomain { posix, cocoa, loftmere };

// Why something could not be done. `message` is one plain sentence that may be shown to the user as it
// stands.
struct Failure {
    FailureDomain domain = FailureDomain::loftmere;
    int code = 0;
    std::string message;
    std::shared_ptr<const Failure> underlying = nullptr;

    // A failure of our own, told in words only.
    static Failure saying(std::string message);

    // A failed system call: "Could not {action} {path}: {reason}". `error` is an errno value; names from disk
    // are made printable.
    static Failure posix(int error, std::string_view action, std::string_view path);
};

// The answer of whatever may fail. No exception crosses a function of this program.
template <class T> using Result = std::expected<T, Failure>;
using Status = Result<void>;

// `return failed(...)` from a function that answers a Result.
inline std::unexpected<Failure> failed(Failure failure) {
    return std::unexpected(std::move(failure));
}

} // namespace loftmere
