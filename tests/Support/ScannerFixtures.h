#pragma once

#include "CleanerCore/Records/CleanCategory.h"
#include "CleanerCore/Records/ScanItem.h"
#include "CleanerCore/Scanning/JunkScanner.h"
#include "CleanerCore/Scanning/ScanContext.h"
#include "tests/Support/TemporaryHome.h"

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
    // A folder that the scanner measures as part of a finding, null when it measures none.
    const char* measured = nullptr;
    // Whether findings and progress are to be expected: not where they come from a tool that may be missing.
    bool finds = true;
    bool reports = true;
};

std::span<const ScannerFixture> scannerFixtures();
const ScannerFixture* scannerFixture(CleanCategory category);

// Gives everything below the home an access and modification date so many days back.
void ageEverything(const TemporaryHome& home, double days);

// The paths of all items below the home; looking touches no date.
std::vector<std::string> everythingBelow(const TemporaryHome& home);

// A scan of the home as of now, never cancelled, under settings that let small fixtures count.
ScanContext scanContext(const TemporaryHome& home, AppConfig config = {.largeFileMinMB = 1});

// The titles, sorted, so that a test can list what it expects: of items, or of what a scan finds.
std::vector<std::string> titlesOf(const std::vector<ScanItem>& items);
std::vector<std::string> found(const JunkScanner& scanner, const ScanContext& context);

} // namespace loftmere::test
