#include "CleanerCore/Support/Result.h"

#include "CleanerCore/Support/Text.h"

#include <fmt/format.h>

#include <system_error>

namespace loftmere {

Failure Failure::saying(std::string message) {
    return {.message = std::move(message)};
}

Failure Failure::posix(int error, std::string_view action, std::string_view path) {
    return {.domain = FailureDomain::posix,
            .code = error,
            .message = fmt::format("Could not {} {}: {}", action, printable(path),
                                   std::generic_category().message(error))};
}

} // namespace loftmere
