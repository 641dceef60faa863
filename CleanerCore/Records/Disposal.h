#pragma once

#include "CleanerCore/Support/Json.h"

namespace loftmere {

// What happens to an item when it is cleaned. `remove` has the raw value "delete", a word that C++ keeps for
// itself.
enum class Disposal { quarantine, trash, remove };

// "quarantine", "trash", "delete".
const char* rawValue(Disposal disposal);

// "Quarantine (undo)", "Move to Trash", "Delete immediately".
const char* label(Disposal disposal);

LOFTMERE_JSON_CODEC(Disposal);

} // namespace loftmere
