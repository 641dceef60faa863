#pragma once

#include <string>
#include <string_view>

namespace loftmere {

// The text of the root helper with this system's commands in it, to be run with /bin/bash. `settings` are
// shell lines that follow its own constants; only tests have any.
std::string helperScript(std::string_view settings = "");

// The file helper.sh as it is, built into the program.
extern const char* const helperScriptTemplate;

} // namespace loftmere
