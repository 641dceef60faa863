#include "CleanerCore/Platform/User.h"
#include "CleanerCore/Scanning/ScanEngine.h"

#include <fmt/format.h>

int main() {
    const loftmere::ScanEngine engine(loftmere::Paths(loftmere::homeDirectory()), {});
    for (const auto& result : engine.scan(std::set{loftmere::CleanCategory::trash})) {
        for (const auto& item : result.items) fmt::print("{}\n", item.title);
    }
}
