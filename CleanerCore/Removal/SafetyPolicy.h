#pragma once

#include <string>
#include <string_view>

namespace loftmere {

// The one veto over every path that anything wants to remove.
class SafetyPolicy {
public:
    // A leading "~" replaced by the home folder, then the path standardised, without trailing slashes.
    static std::string normalize(std::string_view path, std::string_view home);
};

} // namespace loftmere
