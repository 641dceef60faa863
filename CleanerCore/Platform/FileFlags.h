#pragma once

#include <string>

namespace loftmere {

// Whether the item itself is marked as hidden, apart from its name. False where the system has no such mark.
bool isMarkedHidden(const std::string& path);

} // namespace loftmere
