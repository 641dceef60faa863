#pragma once

#include "CleanerCore/Support/Json.h"

namespace loftmere {

// How much thought a removal deserves. Ordered: `safe` is lower than `caution`. A bare integer in JSON.
enum class Risk { safe = 0, review = 1, caution = 2 };

// "Safe", "Review", "Caution".
const char* label(Risk risk);

LOFTMERE_JSON_CODEC(Risk);

} // namespace loftmere
