#include "CleanerCore/Platform/FileFlags.h"

namespace loftmere {

bool isMarkedHidden(const std::string& /*path*/) {
    return false; // names alone hide
}

} // namespace loftmere
