#pragma once

#include "CleanerCore/Support/Json.h"

#include <string>
#include <vector>

namespace loftmere {

// A tool and its arguments, run without a shell.
struct CommandSpec {
    std::string executable; // a name that Shell looks up, or an absolute path
    std::vector<std::string> arguments;

    // Executable and arguments joined with single blanks, with no quoting.
    std::string display() const;

    bool operator==(const CommandSpec&) const = default;
};

LOFTMERE_JSON_CODEC(CommandSpec);

} // namespace loftmere
