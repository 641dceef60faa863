#include "CleanerCore/Uninstaller/UninstallService.h"

#include <gtest/gtest.h>

namespace loftmere::test {

TEST(ExplainTests, TellsWhyAPathStillStands) {
    const std::string long200 = std::string(159, 'x') + "é" + std::string(40, 'y');
    const struct {
        std::string out;
        std::string err;
        std::string sentence;
    } rows[] = {
        {"", "execution error: User canceled. (-128)", "You cancelled the password prompt"},
        {"User Cancelled", "in use", "You cancelled the password prompt"},
        {"", "rm: x: Operation Not Permitted",
         "macOS blocks this path (System Integrity Protection or Full Disk Access missing)"},
        {"resource busy", "", "File is in use — quit the app and retry"},
        {"", "Read-only file system", "Read-only volume"},
        {"odd", "", "Still present after removal (/a/b)"},
        {"", "ERR refused /a/b", "ERR refused /a/b"},
        {"", long200, std::string(159, 'x') + "é"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(UninstallService::explain({.status = 1, .out = row.out, .err = row.err}, "/a/b"),
                  row.sentence);
    }
}

} // namespace loftmere::test
