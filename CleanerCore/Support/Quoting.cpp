#include "CleanerCore/Support/Quoting.h"

namespace loftmere {

std::string shellQuoted(std::string_view word) {
    std::string quoted = "'";
    for (const char letter : word) {
        if (letter == '\'')
            quoted += R"('\'')";
        else
            quoted += letter;
    }
    return quoted + "'";
}

std::string appleScriptQuoted(std::string_view text) {
    std::string quoted = "\"";
    for (const char letter : text) {
        if (letter == '\\' || letter == '"') quoted += '\\';
        quoted += letter;
    }
    return quoted + "\"";
}

} // namespace loftmere
