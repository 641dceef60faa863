#pragma once

#include "tests/Support/TemporaryHome.h"

#include <string>
#include <string_view>
#include <vector>

namespace loftmere::test {

// Stand-ins for outside tools, small bash scripts that Shell finds before the system's own for as long as
// this object lives. Each records the arguments of its calls. One at a time; it governs the whole process.
class ScriptedTools {
public:
    ScriptedTools();
    ~ScriptedTools();
    ScriptedTools(const ScriptedTools&) = delete;
    ScriptedTools& operator=(const ScriptedTools&) = delete;

    // Makes or replaces a tool; answers its path. In the body "$@" are the arguments.
    std::string add(const std::string& name, std::string_view body = "exit 0");

    // A tool that prints a text as it stands and ends with a status.
    std::string addPrinting(const std::string& name, std::string_view out, int status = 0);

    // From now on the name is found nowhere, whatever this machine has installed.
    void remove(const std::string& name);

    // The arguments of each call so far, in the order of the calls.
    std::vector<std::vector<std::string>> calls(const std::string& name) const;

private:
    TemporaryHome place_;
    std::vector<std::string> names_;
};

} // namespace loftmere::test
