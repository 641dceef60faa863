#include "CleanerCore/Platform/FileFlags.h"

namespace loftmere {

bool isMarkedHidden(const std::string& /*path*/) {
    return false; // names alone hide
}

bool isCloudPlaceholder(int /*fd*/) {
    return false; // sync clients keep whole files here
}

} // namespace loftmere
