#pragma once

#include "CleanerCore/Records/CleanCategory.h"
#include "CleanerCore/Support/Result.h"

#include <string>
#include <vector>

namespace loftmere {

// The categories that names on the command line stand for, each once: a name is a category's raw value or a
// section's
// ("systemJunk"), and no names mean all categories that have a scanner. A name that is neither is answered
// with what there is.
Result<std::vector<CleanCategory>> categoriesNamed(const std::vector<std::string>& names);

// All names there are, as a help text shows them.
std::string namesHelp();

} // namespace loftmere
