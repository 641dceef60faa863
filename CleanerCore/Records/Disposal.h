#pragma once

#include "CleanerCore/Support/Enumeration.h"

namespace loftmere {

// What happens to an item when it is cleaned. `remove` has the raw value "delete", which is a keyword of C++.
enum class Disposal { quarantine, trash, remove };

struct DisposalTraits {
    Disposal value;
    const char* rawValue;
    const char* label;
};

template <>
inline constexpr auto tableOf<Disposal> = std::to_array<DisposalTraits>({
    {Disposal::quarantine, "quarantine", "Quarantine (undo)"},
    {Disposal::trash, "trash", "Move to Trash"},
    {Disposal::remove, "delete", "Delete immediately"},
});
static_assert(isComplete<Disposal>());

} // namespace loftmere
