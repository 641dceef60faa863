#include "CleanerCore/Platform/AdminCommands.h"

#include <algorithm>

namespace loftmere {

std::string_view adminCommand(std::string_view name) {
    const auto row = std::ranges::find(adminCommands(), name, &AdminCommand::name);
    return row != adminCommands().end() ? row->text : std::string_view();
}

} // namespace loftmere
