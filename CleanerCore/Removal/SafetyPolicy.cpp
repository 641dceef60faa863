#include "CleanerCore/Removal/SafetyPolicy.h"

#include "CleanerCore/Support/PathText.h"

namespace loftmere {

std::string SafetyPolicy::normalize(std::string_view path, std::string_view home) {
    if (!path.starts_with('~')) return standardizedPathText(path);
    return standardizedPathText(std::string(home) + std::string(path.substr(1)));
}

} // namespace loftmere
