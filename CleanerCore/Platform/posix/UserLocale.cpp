#include "CleanerCore/Platform/User.h"

#include <cstdlib>
#include <string_view>

namespace loftmere {

namespace {

// The variables that choose it, the strongest first; an empty one counts as not set.
std::string_view chosenLocale() {
    for (const char* variable : {"LC_ALL", "LC_TIME", "LANG"}) {
        const char* value = std::getenv(variable); // NOLINT(concurrency-mt-unsafe): nothing here sets it
        if (value != nullptr && *value != '\0') return value;
    }
    return "C";
}

} // namespace

std::string userLocale() {
    std::string_view locale = chosenLocale();
    locale = locale.substr(0, locale.find_first_of(".@")); // the encoding and the variant
    return std::string(locale == "C" || locale == "POSIX" ? "en_US" : locale);
}

} // namespace loftmere
