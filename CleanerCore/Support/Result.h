#pragma once

#include "CleanerCore/Support/Text.h"

#include <expected>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

namespace loftmere {

// Who numbered a failure's code. `posix` codes are errno values; `cocoa` codes are those that Apple's file
// services use; `loftmere` failures carry no code, only a sentence.
enum class FailureDomain { posix, cocoa, loftmere };

// Why something could not be done. `message` is one plain sentence that may be shown to the user as it is.
struct Failure {
    FailureDomain domain = FailureDomain::loftmere;
    int code = 0;
    std::string message;
    std::shared_ptr<const Failure> underlying = nullptr;

    // A failure of our own, in words only.
    static Failure saying(std::string message) { return {.message = std::move(message)}; }

    // A failed system call: "Could not {action} {path}: {reason}". `error` is an errno value. The path is
    // made printable.
    static Failure posix(int error, std::string_view action, std::string_view path) {
        return {.domain = FailureDomain::posix,
                .code = error,
                .message = "Could not " + std::string(action) + " " + printable(path) + ": " +
                           std::generic_category().message(error)};
    }
};

// What every function returns that may fail. No exception crosses a function of this program.
template <class T> using Result = std::expected<T, Failure>;
using Status = Result<void>;

// `return failed(...)` from a function that returns a Result.
inline std::unexpected<Failure> failed(Failure failure) {
    return std::unexpected(std::move(failure));
}

} // namespace loftmere
