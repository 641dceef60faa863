#include "CleanerCore/Platform/System.h"
#include "CleanerCore/Support/ByteCount.h"
#include "CleanerCore/Support/Crew.h"
#include "CleanerCore/Support/Crypto.h"
#include "CleanerCore/Support/Date.h"
#include "CleanerCore/Support/PathText.h"
#include "CleanerCore/Support/Text.h"
#include "tests/Support/Waiting.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstdlib>
#include <limits>
#include <thread>

using namespace loftmere;

TEST(ByteFormat, RoundsAsTheFileCountStyleDoes) {
    using Case = std::pair<int64_t, const char*>;
    for (const auto& [bytes, text] :
         {Case{0, "Zero KB"}, Case{1, "1 byte"}, Case{999, "999 bytes"}, Case{1000, "1 KB"},
          Case{12'345, "12 KB"}, Case{999'499, "999 KB"}, Case{999'500, "1 MB"}, Case{1'500'000, "1.5 MB"},
          Case{1'960'000, "2 MB"}, Case{999'950'000, "1 GB"}, Case{1'250'000'000, "1.25 GB"},
          Case{1'200'000'000, "1.2 GB"}, Case{3'000'000'000'000, "3 TB"}, Case{-1500, "-2 KB"},
          Case{std::numeric_limits<int64_t>::max(), "9.22 EB"}})
        EXPECT_EQ(ByteFormat::string(bytes), text) << bytes;
    int64_t sum = std::numeric_limits<int64_t>::max() - 1;
    addBytes(sum, 2);
    EXPECT_EQ(sum, std::numeric_limits<int64_t>::max());
}

TEST(Date, ISO8601IsStrictAndWhole) {
    const auto date = fromISO8601("2026-03-01T09:30:00Z");
    ASSERT_TRUE(date);
    EXPECT_EQ(toISO8601(*date), "2026-03-01T09:30:00Z");
    EXPECT_EQ(toISO8601(addSeconds(*date, 0.9)), "2026-03-01T09:30:00Z");
    EXPECT_EQ(fromISO8601("2026-03-01T11:30:00+02:00"), date);
    EXPECT_EQ(toISO8601(*fromISO8601("1969-12-31T23:59:59Z")), "1969-12-31T23:59:59Z");
    for (const char* bad :
         {"2026-03-01T09:30:00.5Z", "2026-03-01T09:30:00", "2026-02-30T09:30:00Z", "2026-03-01 09:30:00Z",
          "2026-03-01T24:30:00Z", "2026-3-1T09:30:00Z", "2026-03-01T09:30:00Zx", ""}) {
        EXPECT_FALSE(fromISO8601(bad)) << bad;
    }
}

TEST(Date, SaturatesInsteadOfOverflowing) {
    EXPECT_EQ(addSeconds(currentDate(), -1e30), distantPast);
    EXPECT_EQ(addSeconds(currentDate(), 1e30), distantFuture);
    EXPECT_EQ(dateFrom({.tv_sec = std::numeric_limits<time_t>::max(), .tv_nsec = 0}), distantFuture);
    EXPECT_GT(secondsBetween(distantPast, distantFuture), 1e10);
}

TEST(DateText, FollowsTheUsersLocale) {
    ::setenv("TZ", "UTC", 1);
    const Date date = *fromISO8601("2026-03-01T09:30:00Z");
    EXPECT_EQ(DateText::medium(date, "en_US"), "Mar 1, 2026");
    EXPECT_EQ(DateText::medium(date, "de_DE"), "01.03.2026");
    EXPECT_FALSE(DateText::medium(distantFuture, "xx_nonsense").empty());
    EXPECT_EQ(DateText::local(date, "%Y%m%d-%H%M%S"), "20260301-093000");

    using Case = std::array<const char*, 4>;
    for (const auto& [all, times, lang, expected] :
         {Case{"", "", "de_DE.UTF-8", "de_DE"}, Case{"", "fr_FR@euro", "de_DE", "fr_FR"},
          Case{"C.UTF-8", "fr_FR", "de_DE", "en_US"}, Case{"", "", "", "en_US"},
          Case{"POSIX", "", "", "en_US"}}) {
        ::setenv("LC_ALL", all, 1);
        ::setenv("LC_TIME", times, 1);
        ::setenv("LANG", lang, 1);
        EXPECT_EQ(userLocale(), expected);
    }
    ::setenv("LC_ALL", "C", 1);
}

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

TEST(PathText, TakesPathsApart) {
    EXPECT_EQ(lastPathComponent("/a/b/"), "b");
    EXPECT_EQ(lastPathComponent("/"), "/");
    EXPECT_EQ(parentPath("/a"), "/");
    EXPECT_EQ(parentPath("/a//b"), "/a");
    EXPECT_EQ(pathExtension("/x/.hidden"), "");
    EXPECT_EQ(pathExtension("/x/a.tar.GZ"), "GZ");
    EXPECT_EQ(joinPath("/a/", "/b"), "/a/b");
    EXPECT_EQ(standardizedPathText("//a/./b/../../..//c/"), "/c");
    EXPECT_EQ(standardizedPathText("../a/../../b"), "../../b");
    EXPECT_TRUE(isAtOrUnder("/a/b", "/a"));
    EXPECT_TRUE(isAtOrUnder("/a", "/"));
    EXPECT_FALSE(isAtOrUnder("/ab", "/a"));
}

TEST(Text, NothingFromOutsideReachesATerminalRaw) {
    EXPECT_EQ(printable("a\x1b[31mb\nc\x7f"), "a␛[31mb␊c␡");
    EXPECT_EQ(printable("\xff\xfe"
                        "x\xc3\x28"),
              "\xEF\xBF\xBD\xEF\xBF\xBDx\xEF\xBF\xBD(");
    EXPECT_EQ(printable("a\u202Eb\u2028c\u0085"), "a\uFFFDb\uFFFDc\uFFFD");
    EXPECT_EQ(printable("naïve 日本 👩‍🚀"), "naïve 日本 👩‍🚀");
    EXPECT_FALSE(isValidUTF8("\xed\xa0\x80"));
    EXPECT_FALSE(isValidUTF8("\xf5\x80\x80\x80"));
    EXPECT_FALSE(isValidUTF8("cut \xe2\x82"));
    EXPECT_EQ(repairedUTF8("cut \xe2\x82"), "cut \xEF\xBF\xBD");
}

TEST(Text, IsCutBetweenCharacters) {
    for (const auto& [size, whole] :
         {std::pair<size_t, const char*>{6, "aé日"}, {5, "aé"}, {3, "aé"}, {2, "a"}}) {
        EXPECT_EQ(wholeCharacters("aé日", size), whole);
    }
    EXPECT_EQ(firstCharacters("aé日本", 3), "aé日");
    EXPECT_EQ(firstCharacters("aé", 9), "aé");
    EXPECT_EQ(prefixOfWidth("é日本", 4), "é日");
    EXPECT_EQ(suffixOfWidth("日e\u0301x", 2), "e\u0301x");
    EXPECT_EQ(suffixOfWidth("日e\u0301x", 1), "x");
}

TEST(Crypto, Base64IsPadded) {
    EXPECT_EQ(base64Encoded(""), "");
    EXPECT_EQ(base64Encoded(std::string_view("\xff\0\xfe?", 4)), "/wD+Pw==");
    EXPECT_EQ(base64Encoded("/a/ü"), "L2Evw7w=");
}

TEST(AbandonableThreaded, LeavesWorkThatIsNotWaitedForToItself) {
    std::atomic<bool> mayEnd = false;
    std::atomic<bool> knew = false;
    std::atomic<bool> ended = false;
    const auto answer = unlessCancelled<int>([] { return true; },
                                             [&](const auto& isAbandoned) {
                                                 while (!mayEnd) std::this_thread::yield();
                                                 knew = isAbandoned();
                                                 ended = true;
                                                 return std::optional(1);
                                             });
    EXPECT_FALSE(answer || ended);
    mayEnd = true;
    while (!ended) std::this_thread::yield();
    EXPECT_TRUE(knew);
    EXPECT_EQ(unlessCancelled<int>(nullptr, [](const auto&) { return std::optional(7); }), 7);
    EXPECT_EQ(unlessCancelled<int>(nullptr, [](const auto&) { return std::optional<int>(); }), std::nullopt);
}

TEST(ConcurrentThreaded, RunsEachIterationOnce) {
    std::vector<std::atomic<int>> counts(1000);
    concurrentPerform(counts.size(), 4, [&](size_t i) { ++counts[i]; });
    for (const auto& count : counts) EXPECT_EQ(count, 1);
}

TEST(ConcurrentThreaded, GoesOnWithoutHelpers) {
    std::atomic<bool> mayEnd = false;
    Crew crew([&] { mayEnd.wait(false); });
    ASSERT_TRUE(test::comesTrue([&] { // a helper of the test before may still be ending
        while (crew.call()) {
        }
        return crew.size() == Crew::limit;
    }));
    int sum = 0; // no atomic, since no other thread comes
    concurrentPerform(100, 4, [&](size_t i) { sum += static_cast<int>(i); });
    EXPECT_EQ(sum, 4950);
    EXPECT_EQ(unlessCancelled<int>(nullptr, [&](const auto&) { return std::optional(++sum); }), 4951);
    mayEnd = true;
    mayEnd.notify_all();
    crew.wait();
    Crew next([] {});
    EXPECT_FALSE(next.call(Crew::limit)) << "left to others";
    EXPECT_TRUE(next.call(Crew::limit - 1));
}
