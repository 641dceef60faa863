#pragma once

#include "CleanerCore/Records/CleanReport.h"
#include "LoftmereApp/Model/Published.h"

#include <cstdint>
#include <optional>

namespace loftmere {

// The running clean, the last one, and what still needs administrator rights.
struct CleanFields : FieldGroup {
    using FieldGroup::FieldGroup;

    Published<double> cleanProgress{main_}; // of the running clean, 0 to 1
    Published<std::optional<CleanReport>> lastReport{main_};

    // The items that wait for administrator rights, and their bytes.
    Published<int> pendingAdmin{main_};
    Published<int64_t> pendingAdminBytes{main_};
};

} // namespace loftmere
