#pragma once

#include <string_view>

namespace loftmere {

// Whether a folder of this name is a package: shown and handled as one thing, such as an application, a photo
// library or a document that is kept as a folder. Goes by the extension, in any case.
bool isPackageName(std::string_view name);

} // namespace loftmere
