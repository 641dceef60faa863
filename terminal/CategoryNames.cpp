#include "terminal/CategoryNames.h"

#include "CleanerCore/Scanning/ScannerRegistry.h"
#include "CleanerCore/Support/Text.h"
#include "LoftmereApp/Model/SidebarItem.h"
#include "terminal/Layout.h"

#include <fmt/format.h>

#include <algorithm>

namespace loftmere {

namespace {

std::vector<std::string> sectionNames() {
    std::vector<std::string> names;
    for (const auto& row : tableOf<SidebarItem>) {
        if (row.group) names.emplace_back(row.rawValue);
    }
    return names;
}

std::vector<std::string> categoryNames() {
    std::vector<std::string> names;
    for (const auto& row : tableOf<CleanCategory>) names.emplace_back(row.rawValue);
    return names;
}

std::vector<CleanCategory> scannedCategories() {
    std::vector<CleanCategory> categories;
    for (const auto& scanner : ScannerRegistry::all()) categories.push_back(scanner->category());
    return categories;
}

// What a single name stands for; empty when it is no name.
std::vector<CleanCategory> categoriesNamed(const std::string& name) {
    if (const auto category = caseNamed<CleanCategory>(name)) return {*category};
    const auto section = caseNamed<SidebarItem>(name);
    return section ? categoriesOf(*section) : std::vector<CleanCategory>{};
}

// Names that are much like the one that was meant.
std::string suggestion(const std::string& name) {
    const std::string meant = asciiLowercased(name);
    std::vector<std::string> alike;
    for (const auto& names : {sectionNames(), categoryNames()}) {
        for (const std::string& candidate : names) {
            const std::string lower = asciiLowercased(candidate);
            if (meant.size() > 2 && (lower.contains(meant) || meant.contains(lower)))
                alike.push_back(candidate);
        }
    }
    return alike.empty() ? "" : fmt::format(" Did you mean {}?", joined(alike, " or "));
}

std::string block(std::string_view heading, const std::vector<std::string>& names) {
    std::string text = fmt::format("{}:\n", heading);
    for (const std::string& line : wrapped(joined(names, " "), 76)) text += fmt::format("  {}\n", line);
    return text;
}

} // namespace

Result<std::vector<CleanCategory>> categoriesNamed(const std::vector<std::string>& names) {
    if (names.empty()) return scannedCategories();
    std::vector<CleanCategory> all;
    for (const std::string& name : names) {
        const auto categories = categoriesNamed(name);
        if (categories.empty()) {
            return failed(Failure::saying(fmt::format("there is no category or section \"{}\".{}\n{}",
                                                      printable(name), suggestion(name), namesHelp())));
        }
        for (const CleanCategory category : categories) {
            if (std::ranges::find(all, category) == all.end()) all.push_back(category);
        }
    }
    return all;
}

std::string namesHelp() {
    return block("Sections", sectionNames()) + block("Categories", categoryNames());
}

} // namespace loftmere
