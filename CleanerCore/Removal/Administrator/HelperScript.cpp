#include "CleanerCore/Removal/Administrator/HelperScript.h"

#include "CleanerCore/Platform/AdminCommands.h"

#include <fmt/format.h>

namespace loftmere {

std::string helperScript(std::string_view settings) {
    constexpr std::string_view placeholder = "#@settings@";
    std::string lines;
    for (const AdminCommand& command : adminCommands()) {
        // Without the request pipe: a command that outlives the helper must not look like a helper that
        // listens.
        lines += fmt::format("{}() {{ {} \"$@\"; }} 3<&-\n", command.name, command.text);
    }
    lines += settings;
    std::string script = helperScriptTemplate;
    script.replace(script.find(placeholder), placeholder.size(), lines);
    return script;
}

} // namespace loftmere
