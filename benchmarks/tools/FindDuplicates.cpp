// Runs the whole duplicate scanner over one folder: FindDuplicates FOLDER. One line for each proposed file:
// its path, a tab and the reason, which names the copy kept.
#include "CleanerCore/Scanning/Duplicates/DuplicateScanner.h"

#include <fmt/format.h>

#include <filesystem>

int main(int count, char** arguments) {
    using namespace loftmere;
    if (count != 2) return 2;
    DuplicateScanner scanner;
    scanner.roots = {{std::filesystem::canonical(arguments[1]).string()}};
    scanner.minBytes = 1; // as the peers do
    const ScanContext context{.paths = Paths("/nonexistent"),
                              .config = {},
                              .now = currentDate(),
                              .isCancelled = [] { return false; },
                              .report = [](CleanCategory, const std::string&) {}};
    const auto items = scanner.scan(context);
    for (const ScanItem& item : items.value()) fmt::print("{}\t{}\n", *item.path(), item.reason);
}
