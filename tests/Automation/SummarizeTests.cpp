#include "CleanerCore/Automation/ScheduledRunner.h"

#include <gtest/gtest.h>

using namespace loftmere;

TEST(Summarize, TellsEachSumThatIsThereInItsOrder) {
    struct Case {
        CleanReport report;
        bool dryRun;
        const char* line;
    };
    for (const Case& c : {
             Case{{}, false, "Nothing to clean"},
             Case{{.freedBytes = 1'500'000}, false, "Freed 1.5 MB"},
             Case{{.freedBytes = 1'500'000}, true, "Would free 1.5 MB"},
             Case{{.failures = {{}}}, false, "1 failed"},
             Case{
                 {.evictedBytes = 4000, .quarantinedBytes = 2000, .trashedBytes = 3000, .failures = {{}, {}}},
                 false,
                 "2 KB to quarantine, 3 KB to Trash, 4 KB offloaded to cloud, 2 failed"},
         })
        EXPECT_EQ(ScheduledRunner::summarize(c.report, c.dryRun), c.line);
}
