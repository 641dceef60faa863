#include "terminal/Findings.h"

#include "CleanerCore/Support/Text.h"
#include "LoftmereApp/Model/SidebarItem.h"

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

std::vector<CleanCategory> allScanned() {
    std::vector<CleanCategory> categories;
    for (const auto& row : tableOf<SidebarItem>) {
        for (const CleanCategory category : categoriesOf(row.value)) categories.push_back(category);
    }
    return categories;
}

// What a single name means; empty when it is no name.
std::vector<CleanCategory> categoriesNamed(const std::string& name) {
    if (const auto category = caseNamed<CleanCategory>(name)) return {*category};
    const auto section = caseNamed<SidebarItem>(name);
    return section ? categoriesOf(*section) : std::vector<CleanCategory>{};
}

// Names like the one that was meant.
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

std::string statusOf(Program& program) {
    const AppModel& model = program.model();
    if (!*model.scanStatusCategory) return program.busy();
    return fmt::format("{}  {}", traits(**model.scanStatusCategory).displayName,
                       program.shown(model.scanStatus));
}

} // namespace

Result<std::vector<CleanCategory>> categoriesNamed(const std::vector<std::string>& names) {
    if (names.empty()) return allScanned();
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

ExitStatus runScan(Program& program, const std::vector<CleanCategory>& categories) {
    AppModel& model = program.model();
    // Only junk is selected by default, so one scan of all gives each section the ticks that opening it
    // gives.
    program.finish(model.scan(categories, true), [&] { return statusOf(program); });

    ExitStatus status = ExitStatus::done;
    for (const CleanCategory category : categories) {
        const auto result = model.results->find(category);
        if (result == model.results->end())
            program.console().say(fmt::format("no scan looks for {}", rawValue(category)));
        else if (result->second.error)
            status = ExitStatus::failed;
    }
    return status;
}

Row findingRow(Program& program, const ScanItem& item) {
    Row row{.size = item.size,
            .tag = riskTag(item.risk),
            .tagInk = inkOf(item.risk),
            .title = printable(item.title)};
    if (item.anyPath() == nullptr) return row;
    row.path = program.shown(*item.anyPath());
    if (row.path.ends_with("/" + row.title)) row.title.clear();
    return row;
}

Row targetRow(Program& program, const std::string& target) {
    Row row;
    (target.starts_with('/') ? row.path : row.title) = program.shown(target);
    return row;
}

} // namespace loftmere
