// Runs one category's scanner over a home: ScanCategory HOME CATEGORY. Prints how much it found.
#include "CleanerCore/Scanning/ScanEngine.h"

#include <fmt/format.h>

int main(int count, char** arguments) {
    if (count != 3) return 2;
    const auto category = loftmere::caseNamed<loftmere::CleanCategory>(std::string_view(arguments[2]));
    if (!category) return 2;
    const loftmere::ScanEngine engine(loftmere::Paths(arguments[1]), {});
    for (const auto& result : engine.scan({*category})) {
        fmt::print("{} items, {} bytes\n", result.items.size(), result.totalSize());
    }
}
