#pragma once

#include <span>
#include <string_view>

namespace loftmere {

// What the root helper calls a thing that it runs, and this system's command for it: shell text that arguments may
// follow. One table serves the helper and the one-shot commands that stand in for it.
struct AdminCommand {
    std::string_view name;
    std::string_view text;
};

std::span<const AdminCommand> adminCommands();

// The text of one command; empty for an unknown name.
std::string_view adminCommand(std::string_view name);

} // namespace loftmere
