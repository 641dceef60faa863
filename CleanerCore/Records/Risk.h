#pragma once

#include "CleanerCore/Support/Enumeration.h"

namespace loftmere {

// How much thought a removal deserves. Ordered: `safe` is lower than `caution`.
enum class Risk { safe, review, caution };

struct RiskTraits {
    Risk value;
    int rawValue;
    const char* label;
};

template <>
inline constexpr auto tableOf<Risk> = std::to_array<RiskTraits>({
    {Risk::safe, 0, "Safe"},
    {Risk::review, 1, "Review"},
    {Risk::caution, 2, "Caution"},
});
static_assert(isComplete<Risk>());

} // namespace loftmere
