#include "CleanerCore/Scanning/Scanners/CloudLocalCopiesScanner.h"
#include "tests/Support/ScannerFixtures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace loftmere;

TEST(CloudLocalCopies, LargeUnopenedFilesByFallingSize) {
    const test::TemporaryHome home;
    constexpr int64_t mebibyte = 1024 * 1024;
    const auto copy = [&](const std::string& path, int64_t size, double ageDays) {
        home.fileOfSize(path, size);
        home.setAgeDays(path, ageDays);
    };
    copy("Library/Mobile Documents/deep/er/old", 25 * mebibyte, 31);
    copy("Library/Mobile Documents/young", 30 * mebibyte, 29);
    copy("Library/Mobile Documents/small", 25 * mebibyte - 4096, 31);
    copy("Library/CloudStorage/OneDrive-Me/larger", 26 * mebibyte, 31);
    copy("elsewhere/old", 25 * mebibyte, 31);
    home.link("Library/CloudStorage/Link", home.at("elsewhere"));
    home.link("Library/Mobile Documents/link", home.at("elsewhere/old"));

    const auto scan = [&](bool cancelled) {
        std::vector<std::string> found;
        ScanContext context = test::scanContext(home);
        context.isCancelled = [&] { return cancelled; };
        for (const ScanItem& item : CloudLocalCopiesScanner().scan(context).value()) {
            EXPECT_EQ(item.risk, Risk::safe);
            EXPECT_GE(item.size, 25 * mebibyte);
            found.push_back(item.id.substr(item.id.find("Library")) + " | " + item.title + " | " +
                            item.reason);
        }
        return found;
    };
    EXPECT_THAT(scan(false), testing::ElementsAre(
                                 "Library/CloudStorage/OneDrive-Me/larger | larger | OneDrive: stays in the "
                                 "cloud, re-downloads when opened",
                                 "Library/Mobile Documents/deep/er/old | old | iCloud Drive: stays in the "
                                 "cloud, re-downloads when opened"));
    EXPECT_TRUE(scan(true).empty());
}
