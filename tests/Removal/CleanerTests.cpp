#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Platform/posix/Calls.h"
#include "CleanerCore/Removal/Cleaning/Cleaner.h"
#include "CleanerCore/Support/Text.h"
#include "tests/Support/Mounted.h"
#include "tests/Support/OrdinaryUser.h"
#include "tests/Support/ScriptedTools.h"

#include <gmock/gmock.h>

#include <atomic>
#include <filesystem>
#include <thread>

using namespace loftmere;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
namespace fs = std::filesystem;

namespace {

constexpr int64_t size = 10;

ScanItem item(ItemTarget target, CleanCategory category = CleanCategory::userCaches) {
    return ScanItem::make({.target = std::move(target), .size = size, .category = category, .reason = ""});
}

class CleanerTest : public testing::Test {
protected:
    CleanerTest() {
        home_.folder(".Trash");
        tools_.add("fine");
        tools_.add("broken", "exit 3");
        tools_.add("loud", "printf 'no disk' >&2; exit 3");
        tools_.add("fileproviderctl");
        tools_.remove("brctl");
    }

    Cleaner cleaner(const AppConfig& config = {}) {
        return Cleaner(home_.paths(), config, {.queue = &queue_, .remove = [this](const auto& paths) {
                                                   for (const ClearedPath& each : paths)
                                                       asked_.push_back(each.path());
                                                   return rootAnswer_;
                                               }});
    }

    CleanReport clean(const std::vector<ScanItem>& items, std::optional<Disposal> disposal = std::nullopt,
                      const TriggerSource& trigger = ManualTrigger{}, const AppConfig& config = {}) {
        return cleaner(config).clean(items, trigger, false, disposal);
    }

    Decision decided(const ScanItem& each, std::optional<Disposal> disposal = std::nullopt) {
        return cleaner().plan({each}, ManualTrigger{}, disposal).items.at(0).decision;
    }

    // The newest line of the log: "action success message".
    std::string lastLogged() const {
        const auto entries = AuditLog(home_.paths()).recent(1);
        if (entries.empty()) return "";
        const AuditEntry& entry = entries.front();
        return entry.action + (entry.success ? " yes " : " no ") + entry.message.value_or("-");
    }

    std::set<std::string> everyPath() const {
        std::set<std::string> paths;
        for (const auto& entry : fs::recursive_directory_iterator(home_.path())) paths.insert(entry.path());
        return paths;
    }

    // One of every kind that a clean must tell apart. Made anew for each use.
    std::vector<ScanItem> oneOfEachKind() const {
        home_.folder("Library/CloudStorage/Box/d");
        home_.file("Library/CloudStorage/Box/.c.icloud", "");
        home_.file("d/inner/x", "x");
        home_.file("caf\xE9", "x");
        if (!FS::exists(home_.at("out"))) home_.link("out", "/proc");
        if (!FS::exists(home_.at("dangling"))) home_.link("dangling", "/nowhere");
        const std::vector<ItemTarget> targets{
            PathTarget{home_.file("f", "x")},
            PathTarget{home_.path() + "//./d/"},
            PathTarget{home_.at("dangling")},
            PathTarget{home_.at("missing")},
            PathTarget{home_.at("f/below")},
            PathTarget{home_.at("Documents")},
            PathTarget{home_.at("out/version")},
            PathTarget{home_.at("caf\xE9")},
            PathTarget{"relative"},
            PathTarget{home_.file("Library/CloudStorage/Box/a", "x")},
            PathTarget{home_.at("Library/CloudStorage/Box/c")}, // its placeholder alone is there
            PathTarget{home_.at("Library/CloudStorage/Box/none")},
            PathTarget{"/Library/Caches/loftmere-test"},
            AdminPathTarget{"/Library/Caches/loftmere-other"},
            AdminPathTarget{"/usr/lib"},
            EvictTarget{home_.file("Library/CloudStorage/Box/e", "x")},
            CommandTarget{{"fine", {"a", "b"}}},
        };
        std::vector<ScanItem> items;
        for (const ItemTarget& target : targets) items.push_back(item(target));
        return items;
    }

    test::TemporaryHome home_;
    test::ScriptedTools tools_;
    AdminQueue queue_{nullptr};
    Shell::Result rootAnswer_;
    std::vector<std::string> asked_;
};

// The log line that a decision promises.
std::string promised(const Decision& decision) {
    const std::string disposal = decision.disposal ? rawValue(*decision.disposal) : "skip";
    switch (decision.action) {
    case PlannedAction::skip: return "skip no " + decision.message;
    case PlannedAction::fail: return disposal + " no " + decision.message;
    case PlannedAction::gone: return "gone yes already gone";
    case PlannedAction::evict: return "evict yes -";
    case PlannedAction::command: return "command yes fine a b";
    case PlannedAction::queueForAdmin: return "queued yes waiting for one password prompt";
    case PlannedAction::removeAsAdmin: return "delete yes admin";
    default: return disposal + " yes -";
    }
}

int64_t gainPromised(const Decision& decision, const CleanReport& report) {
    switch (decision.action) {
    case PlannedAction::evict: return report.evictedBytes;
    case PlannedAction::quarantine: return report.quarantinedBytes;
    case PlannedAction::trash: return report.trashedBytes;
    case PlannedAction::command:
    case PlannedAction::removeAsAdmin:
    case PlannedAction::remove: return report.freedBytes;
    case PlannedAction::queueForAdmin: return report.deferredAdmin * size;
    default: return size - report.totalHandledBytes();
    }
}

} // namespace

TEST_F(CleanerTest, DoesToEveryItemWhatThePreviewSays) {
    int compared = 0;
    const std::vector<TriggerSource> triggers{ManualTrigger{}, ScheduleTrigger{"r"}, UninstallTrigger{"a"}};
    const std::vector<std::optional<Disposal>> disposals{std::nullopt, Disposal::quarantine, Disposal::trash,
                                                         Disposal::remove};
    for (const TriggerSource& trigger : triggers) {
        for (const auto& disposal : disposals) {
            for (const bool queues : {true, false}) {
                const std::vector<ScanItem> items = oneOfEachKind();
                Cleaner cleans = cleaner({.queueAdminRemovals = queues});
                const auto before = everyPath();
                const Plan together = cleans.plan(items, trigger, disposal);
                EXPECT_EQ(everyPath(), before);
                for (size_t i = 0; i < items.size(); ++i) {
                    const ScanItem& each = items[i];
                    const Plan plan = cleans.plan({each}, trigger, disposal);
                    const Decision& decision = plan.items[0].decision;
                    const std::string where = each.id + " " + label(trigger);
                    EXPECT_EQ(together.items[i].decision, decision) << where;
                    const CleanReport preview = cleans.clean({each}, trigger, true, disposal);
                    EXPECT_EQ(preview, plan.report()) << where;
                    // With and without a plan that was shown.
                    const CleanReport report =
                        i % 2 == 0 ? cleans.clean(plan) : cleans.clean({each}, trigger, false, disposal);
                    ++compared;
                    EXPECT_EQ(lastLogged(), promised(decision)) << where;
                    EXPECT_EQ(gainPromised(decision, report), size) << where;
                    EXPECT_EQ(preview.failures, report.failures) << where;
                    if (each.id != "/usr/lib" || !queues)
                        EXPECT_EQ(preview.skippedProtected, report.skippedProtected) << where;
                    EXPECT_FALSE(isTakenAway(decision.action) && FS::exists(*each.anyPath())) << where;
                }
            }
        }
    }
    EXPECT_EQ(compared, 3 * 4 * 2 * 17);
}

TEST_F(CleanerTest, LooksAgainRightBeforeItActs) {
    std::vector<ScanItem> items;
    for (const char* name : {"kept/a", "now/.ssh/b", "late/c", "there/d", "rule/e"})
        items.push_back(item(PathTarget{home_.file(name, "x")}));
    fs::remove(home_.at("late/c"));
    home_.file(home_.paths().configFile(), R"({"protectedPaths": ["~/kept"]})");
    const Plan plan = cleaner().plan(items, ManualTrigger{}, Disposal::remove);
    EXPECT_EQ(plan.report(),
              (CleanReport{.freedBytes = 3 * size, .itemsProcessed = 1, .skippedProtected = {items[0].id}}));

    home_.file(home_.paths().configFile(), R"({"protectedPaths": ["~/rule"]})");
    home_.file("late/c", "another one");
    fs::rename(home_.at("now/.ssh"), home_.at(".ssh"));
    home_.link("now/.ssh", home_.at(".ssh"));
    const CleanReport report = cleaner().clean(plan);
    EXPECT_EQ(report.freedBytes, size);
    EXPECT_THAT(report.skippedProtected, ElementsAre(items[0].id, items[1].id, items[4].id));
    EXPECT_TRUE(FS::exists(home_.at("kept/a"))) << "nobody agreed to it";
    EXPECT_TRUE(FS::exists(home_.at("late/c")));
    EXPECT_TRUE(FS::exists(home_.at(".ssh/b")));
    EXPECT_FALSE(FS::exists(home_.at("there/d")));
    EXPECT_TRUE(FS::exists(home_.at("rule/e")));
}

TEST_F(CleanerTest, RemovesNothingWhileTheSettingsCannotBeRead) {
    const std::vector<ScanItem> items = oneOfEachKind();
    const Plan plan = cleaner().plan(items, ManualTrigger{});
    home_.file(home_.paths().configFile(), "{");
    const std::string sentence = "the settings in " + home_.paths().configFile() +
                                 " cannot be read; what you protect there is not known until they are "
                                 "mended or removed";
    CleanReport refused;
    for (const ScanItem& each : items) refused.failures.push_back({repairedUTF8(each.id), sentence});
    queue_.enqueue({item(AdminPathTarget{home_.at("f")})});
    const auto before = everyPath();
    EXPECT_EQ(cleaner().plan(items, ManualTrigger{}).report(), refused);
    EXPECT_EQ(clean(items), refused);
    EXPECT_EQ(clean(items, Disposal::remove, ScheduleTrigger{"r"}, {.queueAdminRemovals = false}), refused);
    EXPECT_EQ(cleaner().clean(plan), refused);
    for (const AuditEntry& entry : AuditLog(home_.paths()).recent(1000)) EXPECT_FALSE(entry.success);
    const AdminQueue::Outcome flushed = queue_.flush(home_.paths(), {});
    ASSERT_EQ(flushed.failed.size(), 1);
    EXPECT_EQ(flushed.failed[0].second, sentence);
    EXPECT_FALSE(AuditLog(home_.paths()).recent(1).at(0).success);
    std::set<std::string> after = everyPath();
    after.erase(home_.paths().auditFile());
    EXPECT_EQ(after, before);
    EXPECT_THAT(tools_.calls("fine"), IsEmpty());
    EXPECT_THAT(tools_.calls("fileproviderctl"), IsEmpty());
}

TEST_F(CleanerTest, SaysWhatItDid) {
    struct Case {
        ItemTarget target;
        std::string logged;
        std::string failure = ""; // empty: none
        TriggerSource trigger = ManualTrigger{};
    };
    const PathTarget cloud{home_.file("Library/Mobile Documents/a", "x")};
    const std::string synced = "skip no in iCloud Drive; only removable by hand";
    const std::string unreadable = "couldn't be read (the drive it's on may be offline)";
    const std::string notInCloud = "Not inside iCloud Drive or a cloud storage folder";
    const std::string rule = "Protected by your rules (" + home_.at("Work") + ")";
    home_.link("loop", "loop");
    const std::vector<Case> cases{
        {PathTarget{home_.at("Documents")}, "skip no Top-level folder"},
        {PathTarget{home_.at("Work/x")}, "skip no " + rule},
        {cloud, synced, "", ScheduleTrigger{"r"}},
        {cloud, synced, "", UninstallTrigger{"a"}},
        {cloud, "trash yes -"},
        {PathTarget{home_.at("none")}, "gone yes already gone"},
        {PathTarget{home_.path() + "/" + std::string(300, 'n')}, "skip no " + unreadable, unreadable},
        {CommandTarget{{"broken", {"-\xff"}}}, "command no broken -\uFFFD", "exit 3"},
        {CommandTarget{{"loud", {}}}, "command no loud", "no disk"},
        {EvictTarget{home_.at("x")}, "evict no " + notInCloud, notInCloud},
    };
    for (const Case& c : cases) {
        const AppConfig config{.protectedPaths = {"~/Work"}};
        const CleanReport report = clean({item(c.target)}, Disposal::trash, c.trigger, config);
        EXPECT_EQ(lastLogged(), c.logged);
        EXPECT_EQ(report.failures.empty() ? "" : report.failures.front().message, c.failure);
    }
}

TEST_F(CleanerTest, CountsAndOrders) {
    std::vector<std::pair<int64_t, int64_t>> seen;
    const auto note = [&](int64_t done, int64_t total) { seen.emplace_back(done, total); };
    EXPECT_EQ(cleaner().clean({}, ManualTrigger{}, false, std::nullopt, note), CleanReport{});
    EXPECT_THAT(seen, ElementsAre(Pair(0, 0)));
    EXPECT_FALSE(FS::exists(home_.paths().auditFile()));
    EXPECT_FALSE(FS::exists(home_.paths().quarantineDir()));

    seen.clear();
    const std::vector<ScanItem> three{item(PathTarget{home_.file("a", "x")}),
                                      item(PathTarget{home_.file("b", "x")}, CleanCategory::oldDownloads),
                                      item(PathTarget{home_.at("gone")})};
    const CleanReport report = cleaner().clean(three, ManualTrigger{}, false, std::nullopt, note);
    EXPECT_THAT(seen, ElementsAre(Pair(0, 3), Pair(1, 3), Pair(2, 3), Pair(3, 3)));
    EXPECT_EQ(report.freedBytes, size);
    EXPECT_EQ(report.quarantinedBytes, size);
    EXPECT_EQ(report.itemsProcessed, 3);
    EXPECT_TRUE(report.quarantineSessionID);
}

TEST_F(CleanerTest, RootsShare) {
    const std::vector<ScanItem> items{item(AdminPathTarget{home_.file("kept", "x")}),
                                      item(AdminPathTarget{home_.at("away")}),
                                      item(AdminPathTarget{"/usr/x"})};
    CleanReport report = clean(items);
    EXPECT_EQ(report, (CleanReport{.deferredAdmin = 3}));
    EXPECT_EQ(queue_.pending(), items);
    EXPECT_THAT(asked_, IsEmpty());

    for (const auto& [answer, told] : {std::pair{Shell::Result{1, "", "in use"}, "in use"},
                                       std::pair{Shell::Result{}, "Could not remove"}}) {
        asked_.clear();
        rootAnswer_ = answer;
        report = clean(items, {}, ManualTrigger{}, {.queueAdminRemovals = false});
        EXPECT_EQ(report.freedBytes, size);
        EXPECT_EQ(report.itemsProcessed, 1);
        EXPECT_THAT(report.failures, ElementsAre(CleanFailure{items[0].id, told}));
        EXPECT_THAT(report.skippedProtected, ElementsAre("/usr/x"));
        EXPECT_THAT(asked_, ElementsAre(home_.at("kept"), home_.at("away")));
        EXPECT_EQ(lastLogged(), "delete yes admin");
    }
}

TEST_F(CleanerTest, LeavesToRootWhatTheUserMayNotRemove) {
    const std::string path = home_.file("locked/x", "x");
    fs::permissions(home_.at("locked"), fs::perms::owner_read | fs::perms::owner_exec);
    const test::OrdinaryUser user({home_.path()});
    EXPECT_EQ(decided(item(PathTarget{path})).message, "may need administrator rights");
    EXPECT_EQ(clean({item(PathTarget{path})}, Disposal::remove), CleanReport{.deferredAdmin = 1});
    EXPECT_EQ(AuditLog(home_.paths()).recent(2).back().message, "needs admin — queued");
    EXPECT_EQ(lastLogged(), "queued yes waiting for one password prompt");
}

// The folder that the next test exchanges for a link out of the home in the middle of a removal.
std::string exchanged;

int exchangeAndRefuse(calls::Call call) {
    if (call != calls::Call::unlink) return 0;
    fs::rename(exchanged, exchanged + ".aside");
    fs::create_symlink("/usr", exchanged);
    return EACCES;
}

TEST_F(CleanerTest, LeavesNothingToRootThatIsProtectedByNow) {
    const std::string path = home_.file("folder/x", "x");
    exchanged = home_.at("folder");
    calls::hook = exchangeAndRefuse;
    const CleanReport report = clean({item(PathTarget{path})}, Disposal::remove);
    calls::hook = nullptr;
    EXPECT_EQ(report.deferredAdmin, 0);
    ASSERT_EQ(report.failures.size(), 1);
    EXPECT_EQ(lastLogged(), "delete no " + report.failures[0].message);
}

// Somebody writes the file again and again, so that now and then it is there right after its removal.
using CleanerThreaded = CleanerTest;

TEST_F(CleanerThreaded, BelievesTheDiskAndNotTheCall) {
    std::atomic<bool> isOver = false;
    std::thread neighbour([&] {
        while (!isOver) home_.file("back", "x");
    });
    std::vector<CleanFailure> failures;
    for (int i = 0; i < 20000 && failures.empty(); ++i)
        failures = clean({item(PathTarget{home_.at("back")})}, Disposal::remove).failures;
    isOver = true;
    neighbour.join();
    const std::string told = "back reported success but is still on disk — the drive may be read-only";
    EXPECT_THAT(failures, ElementsAre(CleanFailure{home_.at("back"), told}));
    EXPECT_EQ(lastLogged(), "delete no " + told);
}

// What a volume or a missing tool forbids is told by the preview, in the words of the clean, and nothing is
// begun.
TEST_F(CleanerTest, ForeseesWhatItCannotDo) {
    const std::string inner = home_.file("a/cache/inner/x", "x");
    const std::string file = home_.file("a/cache/x", "x");
    home_.file("other/file", "x");
    home_.file("still/f", "x");
    const test::Mounted memory("-t tmpfs none", home_.folder("other/tmpfs"));
    const test::Mounted bound("--bind '" + home_.folder("other") + "'", home_.folder("bound"));
    const test::Mounted below("-t tmpfs none", home_.folder("a/cache/in\nner"));
    const test::Mounted still("--bind '" + home_.at("still") + "'", home_.at("still"));
    if (!memory.done || !bound.done || !below.done || !still.done) GTEST_SKIP() << "needs root";
    const test::Mounted readOnly("-o remount,ro,bind", home_.at("still"));
    home_.file("other/tmpfs/file", "x");
    home_.file("Library/Mobile Documents/a", "x");
    tools_.remove("fileproviderctl");

    const auto path = [&](const char* relative) { return PathTarget{home_.at(relative)}; };
    const auto could = [&](const char* action, const char* relative, const char* why) {
        return "Could not " + std::string(action) + " " + home_.at(relative) + ": " + why;
    };
    const std::string drive =
        " is on another drive — quarantining it would copy the whole file onto this Mac";
    const struct {
        ItemTarget target;
        Disposal disposal;
        std::string told; // empty: it can be done
    } cases[]{
        {path("other/tmpfs/file"), Disposal::quarantine, "file" + drive},
        {path("other/tmpfs/file"), Disposal::trash,
         could("move", "other/tmpfs/file", "Invalid cross-device link")},
        {path("bound/file"), Disposal::quarantine, "file" + drive},
        {path("bound/file"), Disposal::trash, could("move", "bound/file", "Invalid cross-device link")},
        {path("still/f"), Disposal::remove, could("delete", "still/f", "Read-only file system")},
        {path("a"), Disposal::quarantine, could("move", "a", "another volume is mounted there")},
        {path("a"), Disposal::remove,
         could("delete", "a/cache/in\u240Aner", "another volume is mounted there")},
        {path("a/cache/in\nner"), Disposal::trash,
         could("move", "a/cache/in\u240Aner", "another volume is mounted there")},
        {EvictTarget{home_.file("Library/CloudStorage/Box/e", "x")}, Disposal::remove,
         "Could not remove local copy: fileproviderctl not found"},
        {EvictTarget{home_.at("Library/Mobile Documents/a")}, Disposal::remove,
         "Could not remove local copy: this system cannot release local copies of iCloud files"},
        {path("other/tmpfs/file"), Disposal::remove, ""},
        {path("bound/file"), Disposal::remove, ""},
    };
    for (const auto& [target, disposal, told] : cases) {
        const ScanItem each = item(target);
        const auto before = everyPath();
        const std::string action = std::holds_alternative<EvictTarget>(target) ? "evict" : rawValue(disposal);
        const Decision decision = decided(each, disposal);
        const CleanReport preview = cleaner().clean({each}, ManualTrigger{}, true, disposal);
        EXPECT_EQ(everyPath(), before) << each.id;
        const CleanReport report = clean({each}, disposal);
        EXPECT_EQ(lastLogged(), action + (told.empty() ? " yes -" : " no " + told)) << each.id;
        EXPECT_EQ(preview.failures, report.failures) << each.id;
        EXPECT_EQ(report.failures.empty(), told.empty()) << each.id;
        EXPECT_EQ(preview.totalHandledBytes(), told.empty() ? size : 0) << each.id;
        EXPECT_EQ(decision.action == PlannedAction::fail, !told.empty()) << each.id;
        if (!told.empty()) EXPECT_TRUE(FS::exists(*each.anyPath()) && FS::exists(inner) && FS::exists(file));
        // Of what could not go to quarantine the session stays.
        EXPECT_EQ(report.quarantineSessionID.has_value(), disposal == Disposal::quarantine) << each.id;
    }
}

TEST_F(CleanerTest, NamesWhoSyncsWhatALinkLeadsTo) {
    home_.file("Library/CloudStorage/Box-me/a", "x");
    home_.link("Work", home_.at("Library/CloudStorage/Box-me"));
    EXPECT_EQ(decided(item(PathTarget{home_.at("Work/a")})).provider, "Box");
    EXPECT_EQ(decided(item(PathTarget{home_.file("b", "x")})).provider, std::nullopt);
}

TEST(Cleaner, KnowsPermissionErrors) {
    const auto known = [](FailureDomain domain, int code, std::shared_ptr<const Failure> under = nullptr) {
        return Cleaner::isPermissionError(
            {.domain = domain, .code = code, .message = "", .underlying = std::move(under)});
    };
    const auto denied = std::make_shared<const Failure>(Failure::posix(EACCES, "open", "x"));
    for (const int code : {1, 13}) EXPECT_TRUE(known(FailureDomain::posix, code));
    for (const int code : {257, 513}) EXPECT_TRUE(known(FailureDomain::cocoa, code));
    EXPECT_TRUE(known(FailureDomain::cocoa, 4, denied));
    EXPECT_FALSE(known(FailureDomain::cocoa, 13));
    EXPECT_FALSE(known(FailureDomain::loftmere, 13));
    EXPECT_FALSE(known(FailureDomain::posix, 2));
}
