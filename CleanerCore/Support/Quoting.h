#pragma once

#include <string>
#include <string_view>

namespace loftmere {

// One word of a shell command line, whatever it holds: in single quotes.
std::string shellQuoted(std::string_view word);

// A string of AppleScript's, in double quotes.
std::string appleScriptQuoted(std::string_view text);

} // namespace loftmere
