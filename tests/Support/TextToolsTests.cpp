#include "CleanerCore/Platform/User.h"
#include "CleanerCore/Support/DateText.h"
#include "CleanerCore/Support/NumericOrder.h"

#include <gtest/gtest.h>

#include <cstdlib>

using namespace loftmere;

TEST(NumericOrder, DigitsByValueTheRestByCharacter) {
    const char* ascending[] = {
        "",  "9.3", "16.4 (20E247)", "16.4.1", "16.10", "99999999999999999999", "100000000000000000000",
        "a", "a1",  "a2b",           "a10",    "b"};
    for (size_t i = 0; i + 1 < std::size(ascending); ++i) {
        EXPECT_TRUE(compareNumerically(ascending[i], ascending[i + 1]) < 0) << ascending[i];
        EXPECT_TRUE(compareNumerically(ascending[i + 1], ascending[i]) > 0) << ascending[i];
    }
    EXPECT_TRUE(compareNumerically("x017.0", "x17.00") == 0);
}

TEST(DateText, FollowsTheUsersLocale) {
    ::setenv("TZ", "UTC", 1);
    const Date date = *fromISO8601("2026-03-01T09:30:00Z");
    EXPECT_EQ(DateText::medium(date, "en_US"), "Mar 1, 2026");
    EXPECT_EQ(DateText::medium(date, "de_DE"), "01.03.2026");
    EXPECT_FALSE(DateText::medium(distantFuture, "xx_nonsense").empty());

    struct Case {
        const char *all, *time, *lang, *expected;
    };
    for (const Case& c : {Case{"", "", "de_DE.UTF-8", "de_DE"}, Case{"", "fr_FR@euro", "de_DE", "fr_FR"},
                          Case{"C.UTF-8", "fr_FR", "de_DE", "en_US"}, Case{"", "", "", "en_US"},
                          Case{"POSIX", "", "", "en_US"}}) {
        ::setenv("LC_ALL", c.all, 1);
        ::setenv("LC_TIME", c.time, 1);
        ::setenv("LANG", c.lang, 1);
        EXPECT_EQ(userLocale(), c.expected);
    }
    ::setenv("LC_ALL", "C", 1);
}
