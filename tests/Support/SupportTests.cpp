#include "CleanerCore/Support/Abandonable.h"
#include "CleanerCore/Support/ByteFormat.h"
#include "CleanerCore/Support/Concurrent.h"
#include "CleanerCore/Support/Date.h"
#include "CleanerCore/Support/PathText.h"
#include "CleanerCore/Support/Sha256.h"
#include "CleanerCore/Support/Text.h"

#include <gtest/gtest.h>

#include <atomic>
#include <limits>
#include <string>
#include <thread>

using namespace loftmere;

TEST(ByteFormat, RoundsAsTheFileCountStyleDoes) {
    const std::vector<std::pair<int64_t, std::string>> cases{
        {0, "Zero KB"},
        {1, "1 byte"},
        {999, "999 bytes"},
        {1000, "1 KB"},
        {12'345, "12 KB"},
        {999'499, "999 KB"},
        {999'500, "1 MB"},
        {1'500'000, "1.5 MB"},
        {1'960'000, "2 MB"},
        {999'950'000, "1 GB"},
        {1'250'000'000, "1.25 GB"},
        {1'200'000'000, "1.2 GB"},
        {3'000'000'000'000, "3 TB"},
        {-1500, "-2 KB"},
        {std::numeric_limits<int64_t>::max(), "9.22 EB"},
    };
    for (const auto& [bytes, text] : cases) EXPECT_EQ(ByteFormat::string(bytes), text) << bytes;
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

TEST(Sha256, KnownDigest) {
    Sha256 hash;
    hash.update(std::as_bytes(std::span("abc", 3)));
    EXPECT_EQ(hash.finish(), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
}

TEST(Abandonable, LeavesWorkThatIsNotWaitedForToItself) {
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

TEST(Concurrent, RunsEachIterationOnce) {
    std::vector<std::atomic<int>> counts(1000);
    concurrentPerform(counts.size(), 4, [&](size_t i) { ++counts[i]; });
    for (const auto& count : counts) EXPECT_EQ(count, 1);
}
