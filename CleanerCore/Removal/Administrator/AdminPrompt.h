#pragma once

#include "CleanerCore/Process/Shell.h"

#include <functional>
#include <string>

namespace loftmere {

// How root is asked for: runs one shell command line as root after the user has agreed, with a text that
// tells the user what for (none when empty) and a limit in seconds for the prompt and the command together.
// Any status but 0 when the user declines.
using AdminPrompt =
    std::function<Shell::Result(const std::string& command, const std::string& text, double timeout)>;

// The system's own prompt, by the first tool of these that is there: osascript, pkexec. A prompt that the
// user has dismissed is told as osascript tells it, "User canceled". Blocks for as long as the user thinks;
// never on the main thread.
Shell::Result runAsAdministrator(const std::string& command, const std::string& text, double timeout);

} // namespace loftmere
