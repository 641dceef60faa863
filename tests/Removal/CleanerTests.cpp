#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Platform/Removal.h"
#include "CleanerCore/Removal/Cleaner.h"
#include "tests/Support/ScriptedTools.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <thread>

using namespace loftmere;
using testing::ElementsAre;
using testing::HasSubstr;
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
                                                   asked_.insert(asked_.end(), paths.begin(), paths.end());
                                                   return rootAnswer_;
                                               }});
    }

    CleanReport clean(const std::vector<ScanItem>& items, std::optional<Disposal> disposal = std::nullopt,
                      const TriggerSource& trigger = ManualTrigger{}, const AppConfig& config = {}) {
        return cleaner(config).clean(items, trigger, false, disposal);
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

// The log line that a plan promises.
std::string promised(const CleanPlan& plan) {
    switch (plan.action) {
    case CleanAction::skip:
    case CleanAction::fail: return "skip no " + plan.message;
    case CleanAction::gone: return "gone yes already gone";
    case CleanAction::evict: return "evict yes -";
    case CleanAction::command: return "command yes fine a b";
    case CleanAction::queueForAdmin: return "queued yes waiting for one password prompt";
    case CleanAction::removeAsAdmin: return "delete yes admin";
    default: return std::string(rawValue(*plan.disposal)) + " yes -";
    }
}

int64_t gainPromised(const CleanPlan& plan, const CleanReport& report) {
    switch (plan.action) {
    case CleanAction::evict: return report.evictedBytes;
    case CleanAction::quarantine: return report.quarantinedBytes;
    case CleanAction::trash: return report.trashedBytes;
    case CleanAction::command:
    case CleanAction::removeAsAdmin:
    case CleanAction::remove: return report.freedBytes;
    case CleanAction::queueForAdmin: return report.deferredAdmin * size;
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
                for (const ScanItem& each : oneOfEachKind()) {
                    Cleaner cleans = cleaner({.queueAdminRemovals = queues});
                    const auto before = everyPath();
                    const CleanPlan plan = cleans.plan(each, trigger, disposal);
                    const CleanReport preview = cleans.clean({each}, trigger, true, disposal);
                    EXPECT_EQ(everyPath(), before);
                    const CleanReport report = cleans.clean({each}, trigger, false, disposal);
                    ++compared;
                    const std::string where = each.id + " " + label(trigger);
                    EXPECT_EQ(lastLogged(), promised(plan)) << where;
                    EXPECT_EQ(gainPromised(plan, report), size) << where;
                    EXPECT_EQ(preview.failures, report.failures) << where;
                    if (each.id != "/usr/lib")
                        EXPECT_EQ(preview.skippedProtected, report.skippedProtected) << where;
                    const bool goes = plan.action >= CleanAction::quarantine;
                    EXPECT_EQ(goes && FS::exists(*each.anyPath()), false) << where;
                }
            }
        }
    }
    EXPECT_EQ(compared, 3 * 4 * 2 * 17);
}

TEST_F(CleanerTest, SaysWhatItDid) {
    struct Case {
        ItemTarget target;
        std::optional<Disposal> disposal;
        TriggerSource trigger;
        std::string logged;
        std::string failure; // empty: none
    };
    const std::string cloud = home_.file("Library/Mobile Documents/a", "x");
    const std::string synced = "in iCloud Drive; only removable by hand";
    const std::string unreadable = "couldn't be read (the drive it's on may be offline)";
    const std::string endless = home_.path() + "/" + std::string(300, 'n');
    const std::string fixed = "/proc/self/status";
    home_.link("loop", "loop");
    const std::vector<Case> cases{
        {PathTarget{home_.at("Documents")}, {}, ManualTrigger{}, "skip no Top-level folder", ""},
        {PathTarget{home_.at("Work/x")},
         {},
         ManualTrigger{},
         "skip no Protected by your rules (" + home_.at("Work") + ")",
         ""},
        {PathTarget{cloud}, {}, ScheduleTrigger{"r"}, "skip no " + synced, ""},
        {PathTarget{cloud}, {}, UninstallTrigger{"a"}, "skip no " + synced, ""},
        {PathTarget{cloud}, Disposal::trash, ManualTrigger{}, "trash yes -", ""},
        {PathTarget{home_.at("none")}, {}, ManualTrigger{}, "gone yes already gone", ""},
        {PathTarget{endless}, {}, ManualTrigger{}, "skip no " + unreadable, unreadable},
        {CommandTarget{{"broken", {"-x"}}}, {}, ManualTrigger{}, "command no broken -x", "exit 3"},
        {CommandTarget{{"loud", {}}}, {}, ManualTrigger{}, "command no loud", "no disk"},
        {EvictTarget{home_.at("x")},
         {},
         ManualTrigger{},
         "evict no Not inside iCloud Drive or a cloud storage folder",
         "Not inside iCloud Drive or a cloud storage folder"},
    };
    for (const Case& c : cases) {
        const CleanReport report =
            clean({item(c.target)}, c.disposal, c.trigger, {.protectedPaths = {"~/Work"}});
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

TEST_F(CleanerTest, BringsBackAndSaysWhatStays) {
    const CleanReport report =
        clean({item(PathTarget{home_.file("a", "x")}), item(PathTarget{home_.file("b", "x")})},
              Disposal::quarantine);
    home_.file("b", "new");
    const auto failures = cleaner().restore(*report.quarantineSessionID, std::nullopt);
    ASSERT_TRUE(failures);
    EXPECT_THAT(*failures, ElementsAre(testing::Field(&CleanFailure::itemID, home_.at("b"))));
    EXPECT_TRUE(FS::exists(home_.at("a")));
    EXPECT_EQ(lastLogged(), "restore no 1 item(s) could not be restored");
    EXPECT_TRUE(cleaner().restore(*report.quarantineSessionID, std::set<std::string>{}));
    EXPECT_EQ(lastLogged(), "restore yes -");
}

TEST_F(CleanerTest, NeverFallsBackToAnotherDisposal) {
    home_.file("Library/Application Support/Ostrel Loftmere/Quarantine", "in the way");
    const std::string path = home_.file("a", "x");
    const CleanReport report = clean({item(PathTarget{path})}, Disposal::quarantine);
    EXPECT_EQ(report.failures.size(), 1U);
    EXPECT_EQ(lastLogged(), "quarantine no " + report.failures.at(0).message);
    EXPECT_TRUE(FS::exists(path));
}

// Root may do everything, so a process without its rights has to try.
TEST_F(CleanerTest, LeavesToRootWhatTheUserMayNotRemove) {
    for (const char* folder : {"", "Library", "Library/Application Support/Ostrel Loftmere", "locked"}) {
        fs::permissions(home_.folder(folder), fs::perms::all);
    }
    const std::string path = home_.file("locked/x", "x");
    fs::permissions(home_.at("locked"), fs::perms(0755));
    const auto asNobody = [&] {
        if (::setuid(65534) != 0) std::exit(2);
        const CleanReport report = clean({item(PathTarget{path})}, Disposal::remove);
        const auto logged = AuditLog(home_.paths()).recent(2);
        const bool isRight = report == CleanReport{.deferredAdmin = 1} && logged.size() == 2 &&
                             logged[1].action == "delete" && !logged[1].success &&
                             logged[1].message == "needs admin — queued" && logged[0].action == "queued";
        std::exit(isRight ? 0 : 1);
    };
    if (::geteuid() == 0) EXPECT_EXIT(asNobody(), testing::ExitedWithCode(0), "");
}

TEST(Cleaner, KnowsPermissionErrors) {
    const auto failure = [](FailureDomain domain, int code, std::shared_ptr<const Failure> under = nullptr) {
        return Failure{.domain = domain, .code = code, .message = "", .underlying = std::move(under)};
    };
    const auto denied = std::make_shared<const Failure>(failure(FailureDomain::posix, 13));
    EXPECT_TRUE(Cleaner::isPermissionError(failure(FailureDomain::posix, 1)));
    EXPECT_TRUE(Cleaner::isPermissionError(failure(FailureDomain::cocoa, 513)));
    EXPECT_TRUE(Cleaner::isPermissionError(failure(FailureDomain::cocoa, 257)));
    EXPECT_TRUE(Cleaner::isPermissionError(failure(FailureDomain::cocoa, 4, denied)));
    EXPECT_FALSE(Cleaner::isPermissionError(failure(FailureDomain::cocoa, 13)));
    EXPECT_FALSE(Cleaner::isPermissionError(failure(FailureDomain::loftmere, 13)));
    EXPECT_FALSE(Cleaner::isPermissionError(failure(FailureDomain::posix, 2)));
}

// While files are being removed, another thread keeps exchanging their folder for a link to one outside.
// Answers how many files outside were lost.
int64_t lossesUnderExchange(const test::TemporaryHome& home,
                            const std::function<void(const std::vector<ScanItem>&)>& remove) {
    const test::TemporaryHome outside;
    home.folder("a");
    home.link("link", outside.path());
    std::vector<ScanItem> items;
    for (int i = 0; i < 200; ++i) {
        home.file("a/" + std::to_string(i), "x");
        outside.file(std::to_string(i), "x");
        items.push_back(item(PathTarget{home.at("a/" + std::to_string(i))}));
    }
    std::atomic<bool> done = false;
    std::thread exchanger([&] {
        while (!done) {
            fs::rename(home.at("a"), home.at("aside"));
            fs::rename(home.at("link"), home.at("a"));
            fs::rename(home.at("a"), home.at("link"));
            fs::rename(home.at("aside"), home.at("a"));
        }
    });
    remove(items);
    done = true;
    exchanger.join();
    return 200 - std::distance(fs::directory_iterator(outside.path()), fs::directory_iterator());
}

TEST(Cleaner, LosesNothingToALinkSwappedIn) {
    for (int i = 0; i < 8; ++i) {
        const test::TemporaryHome home;
        Cleaner cleaner(home.paths(), {});
        const auto clean = [&](const auto& items) {
            cleaner.clean(items, ManualTrigger{}, false,
                          i % 2 == 0 ? Disposal::remove : Disposal::quarantine);
        };
        EXPECT_EQ(lossesUnderExchange(home, clean), 0);
    }
}

TEST(Cleaner, WouldLoseMuchByLookingFirstAndRemovingByPath) {
    int64_t losses = 0;
    for (int i = 0; i < 100 && losses == 0; ++i) {
        const test::TemporaryHome home;
        const SafetyPolicy policy(home.paths(), {});
        losses = lossesUnderExchange(home, [&](const auto& items) {
            for (const ScanItem& each : items) {
                const auto verdict = policy.check(*each.path());
                if (std::holds_alternative<SafetyPolicy::Allowed>(verdict)) std::remove(each.path()->c_str());
            }
        });
    }
    EXPECT_GT(losses, 0);
}
