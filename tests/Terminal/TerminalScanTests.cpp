#include "CleanerCore/Support/Json.h"
#include "CleanerCore/Support/Text.h"
#include "terminal/Layout.h"
#include "tests/Support/TemporaryHome.h"
#include "tests/Terminal/TerminalRun.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <regex>

using namespace loftmere;
using namespace loftmere::test;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

namespace {

// A Trash full of names that would like to take over a terminal.
void fillTrash(const TemporaryHome& home) {
    for (const std::string name :
         {"plain.txt", "line\nbreak", "esc\x1B[31mred", "bell\x07", "rtl\u202Etxt.exe", "c1\u009B31m",
          "del\x7F", "tag\U000E0041", "日本語の長い名前", "e\u0301te\u0301", "bad\xFF"})
        home.file(".Trash/" + name, "x");
    home.file(".Trash/" + std::string(255, 'n'), std::string(9000, 'x'));
}

// Without colours; what the status line wrote and took away again stands on lines of its own.
std::string withoutEscapes(const std::string& text) {
    const std::string apart = std::regex_replace(text, std::regex("\x1B\\[K"), "\n");
    return std::regex_replace(apart, std::regex("\x1B\\[[0-9;]*[A-Za-z]"), "");
}

bool isShowable(const std::string& text) {
    std::string lines = text;
    std::erase(lines, '\n');
    return lines == printable(lines);
}

} // namespace

TEST(TerminalProgram, AnswersUsageQuestionsAndMistakes) {
    const TemporaryHome home;
    struct Case {
        std::vector<std::string> arguments;
        int status;
        const char* out;
        const char* err;
    };
    for (const Case& c : {
             Case{{"--version"}, 0, "loftmere ", ""},
             Case{{"--help"}, 0, "Verbs:", ""},
             Case{{"scan", "--help"}, 0, "userCaches logs crashReports", ""},
             Case{{}, 2, "", "loftmere scan"},
             Case{{"scrub"}, 2, "", "not expected: scrub"},
             Case{{"scan", "--frobnicate"}, 2, "", "--frobnicate"},
             Case{{"scan", "caches"}, 2, "", "Did you mean userCaches or packageCaches?"},
             Case{{"scan", "esc\x1B[2J"}, 2, "", "esc\u241B[2J"},
             Case{{"scan", "smartCare"}, 2, "", "no category or section"},
             Case{{"scan", "appBundle"}, 0, "", "no scan looks for appBundle"},
             Case{{"scan", "[]"}, 2, "", "no category or section \"[]\""},
             Case{{"clean", "{}", "--yes"}, 2, "", "no category or section \"{}\""},
             Case{{"clean", "++", "--yes"}, 2, "", "no category or section \"++\""},
             Case{{"clean", "trash", "--yes", "--select=", "logs"},
                  1,
                  "Nothing to clean",
                  "no scan found \"\";"},
             Case{{"undo", ""}, 1, "", "there is no session \"\";"},
             Case{
                 {"history", "--limit", "abc"}, 2, "", "--limit takes a whole number from 0 on, not \"abc\""},
             Case{{"history", "--limit=99999999999999999999"}, 0, "Nothing was done yet.", ""},
             Case{{"purge"}, 2, "", "--expired"},
             Case{{"purge", "--expired"}, 0, "No session was purged.", ""},
             Case{{"scan", "trash"}, 0, "Nothing to remove here right now.", ""},
         }) {
        const auto result = runTerminal(home.path(), c.arguments);
        SCOPED_TRACE(testing::PrintToString(c.arguments));
        EXPECT_EQ(result.status, c.status);
        EXPECT_THAT(result.out, HasSubstr(c.out));
        EXPECT_THAT(result.err, HasSubstr(c.err));
        EXPECT_EQ(result.out.empty(), *c.out == '\0');
        EXPECT_EQ(result.err.empty(), *c.err == '\0');
    }
}

TEST(TerminalProgram, ScanGivesTheSameJsonWhereverTheFlagStands) {
    const TemporaryHome home;
    fillTrash(home);
    const auto before = runTerminal(home.path(), {"--json", "scan", "trash"});
    const auto after = runTerminal(home.path(), {"scan", "systemJunk", "trash", "--json"});
    EXPECT_EQ(before.status, 0);
    EXPECT_EQ(before.err, "");
    const Json document = parseJson(before.out).value();
    EXPECT_EQ(before.out, printableJson(document.dump(2)) + "\n");
    const Json& trash = document["results"][0];
    EXPECT_EQ(document["results"].size(), 1U);
    EXPECT_EQ(trash["category"], "trash");
    EXPECT_EQ(trash["items"].size(), 11U); // the name that is no text is left out
    EXPECT_FALSE(trash.contains("error"));
    EXPECT_TRUE(isShowable(before.out)) << before.out; // escaped, not replaced: the names come back whole
    int64_t total = 0;
    for (const Json& item : trash["items"]) total += item["size"].get<int64_t>();
    EXPECT_EQ(trash["totalSize"], total);
    EXPECT_EQ(document["selected"], Json::array());
    const Json systemJunk = parseJson(after.out).value();
    EXPECT_THAT(systemJunk["results"], testing::Contains(trash));
}

TEST(TerminalProgram, NoNameFromDiskReachesTheTerminalAsItIs) {
    const TemporaryHome home;
    fillTrash(home);
    const auto piped = runTerminal(home.path(), {"scan"});
    EXPECT_TRUE(isShowable(piped.out)) << piped.out;
    EXPECT_THAT(piped.out, HasSubstr("esc\u241B[31mred"));
    EXPECT_THAT(piped.out, HasSubstr(std::string(255, 'n'))); // nothing is cut where no terminal is
    const auto verbose = TerminalScreen(home.path(), {"scan", "trash", "--verbose"}, 80).finish();
    EXPECT_THAT(verbose.out, HasSubstr("~/.Trash/" + std::string(255, 'n')));

    home.fileOfSize("Library/Caches/com.example/data", 100'000);
    home.setAgeDays("Library/Caches/com.example", 2);
    const Words narrow{"scan", "userCaches", "trash", "logs", "crashReports"};
    for (const int columns : {20, 34, 80, 120}) {
        const auto shown = TerminalScreen(home.path(), narrow, columns).finish();
        EXPECT_EQ(shown.status, 0);
        EXPECT_THAT(shown.out, HasSubstr("removes"));
        EXPECT_THAT(shown.out, HasSubstr("\x1B[33mReview"));
        const std::string plain = withoutEscapes(shown.out);
        EXPECT_TRUE(isShowable(plain)) << plain;
        for (const std::string& line : splitOmittingEmpty(plain, '\n'))
            EXPECT_LE(displayWidth(line), columns) << line;
    }
    const auto uncoloured = TerminalScreen(home.path(), {"scan"}, 80, {"NO_COLOR=1"}).finish();
    EXPECT_THAT(uncoloured.out, Not(HasSubstr("\x1B[3")));
    const auto ascii = TerminalScreen(home.path(), {"scan"}, 80, {"LC_ALL=C"}).finish();
    EXPECT_TRUE(std::ranges::all_of(ascii.out, [](char c) { return c > 0; })) << ascii.out;
}

TEST(TerminalProgram, AVanishedReaderIsNoFailureButAFullDiskIs) {
    const TemporaryHome home;
    fillTrash(home);
    for (const auto& [command, status] :
         {std::pair("\"$0\" scan | true; exit ${PIPESTATUS[0]}", 0), std::pair("\"$0\" scan > /dev/full", 1),
          std::pair("\"$0\" --help > /dev/full", 1), std::pair("\"$0\" scan >&-", 1),
          std::pair("HOME=/dev/null \"$0\" scan", 1), std::pair("HOME=/ \"$0\" scan", 1)}) {
        const auto run =
            Shell::run("env", {"HOME=" + home.path(), "bash", "-c", command, LOFTMERE_TERMINAL}, 60);
        EXPECT_EQ(run.status, status) << command;
    }
}

TEST(Layout, CutsAndBreaksByWhatIsSeen) {
    EXPECT_EQ(displayWidth("añ日本e\u0301"), 7);
    EXPECT_EQ(cutEnd("日本語", 6, "…"), "日本語");
    EXPECT_EQ(cutEnd("日本語", 5, "…"), "日本…");
    EXPECT_EQ(cutEnd("日本語", 4, "…"), "日…"); // a wide letter is not split
    EXPECT_EQ(cutEnd("abcdef", 2, "..."), "ab");
    EXPECT_EQ(shortPath("~/Library/Caches/a/b", 17, "…"), "~/Library/…/a/b");
    EXPECT_EQ(shortPath("~/Library/Caches/a/b", 14, "…"), "~/Library/…/b");
    EXPECT_EQ(shortPath("~/Library/Caches/a/b", 6, "…"), "~/…/b");
    EXPECT_EQ(shortPath("/a/日本", 5, "…"), "…日本");
    EXPECT_EQ(shortPath("xe\u0301y", 2, "…"), "…y"); // a mark goes with its letter
    EXPECT_EQ(padLeft("日", 4), "  日");
    EXPECT_THAT(wrapped("one two three", 7), ElementsAre("one two", "three"));
    EXPECT_THAT(wrapped("一二三四", 5), ElementsAre("一二", "三四"));
    EXPECT_THAT(wrapped("", 5), ElementsAre(""));
}
