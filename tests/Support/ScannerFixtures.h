#pragma once

#include "CleanerCore/Records/CleanCategory.h"
#include "CleanerCore/Records/ScanItem.h"
#include "CleanerCore/Scanning/JunkScanner.h"
#include "tests/Support/TemporaryHome.h"

#include <optional>
#include <span>
#include <string>
#include <vector>

namespace loftmere::test {

// What the scanner of one category is tried on. Every scanner of the registry has one.
struct ScannerFixture {
    struct File {
        const char* path;
        int64_t size;
        const char* photo = nullptr; // one of the test pictures instead
    };

    // Puts something to find into a home, but nothing that the scanner of another category would find as
    // well.
    void fill(const TemporaryHome& home) const;

    CleanCategory category;
    std::vector<File> files;
    // What is found 400 days after the last change and 390 days after the last use: the linesOf the items.
    std::vector<std::string> findings = {};
    bool measures = true;    // the folder of the first file, as part of a finding
    bool reports = true;     // false where the work is a tool's that may be missing
    bool goesByUse = false;  // finds nothing that was used a short time ago
    bool sparesFresh = true; // finds nothing that has changed within `minItemAgeHours`
};

std::span<const ScannerFixture> scannerFixtures();
const ScannerFixture* scannerFixture(CleanCategory category);

// Makes a file for each of the names, which have "|" between them: "{}" in `path` stands for the name.
void makeFiles(const TemporaryHome& home, const char* path, const std::string& names, int64_t bytes = 1);

// Sets the modification date of an item below the home, or of all, to so many days before the scan, and the
// access date to `usedDays` before it, or to the same.
void age(const TemporaryHome& home, std::string_view path, double days, std::optional<double> usedDays = {});
void ageEverything(const TemporaryHome& home, double days, std::optional<double> usedDays = {});

// The paths of all items below the home; looking touches no date.
std::vector<std::string> everythingBelow(const TemporaryHome& home);

// A scan of the home at noon (UTC) of 19 February 2026, never cancelled, under settings that let small
// fixtures count. A file that a test has not aged is from the future, and so fresh.
ScanContext scanContext(const TemporaryHome& home, AppConfig config = {.largeFileMinMB = 1});

// What the registry's scanner of the category finds, all of it or the titles, sorted.
std::vector<ScanItem> scan(CleanCategory category, const ScanContext& context);
std::vector<std::string> found(CleanCategory category, const ScanContext& context);

// The titles, sorted, or for each risk and reason "{titles} | {risk} | {reason}".
std::vector<std::string> titlesOf(const std::vector<ScanItem>& items);
std::vector<std::string> linesOf(const std::vector<ScanItem>& items);

} // namespace loftmere::test
