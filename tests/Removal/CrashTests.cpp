#include "CleanerCore/Removal/Cleaning/Cleaner.h"
#include "tests/Support/FaultRig.h"
#include "tests/Support/TemporaryHome.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <iostream>

using namespace loftmere;
using test::TemporaryHome;
namespace fs = std::filesystem;

// The process is ended at every file system call of a clean, an undo and a purge, and every such call is made
// to fail in every way. Afterwards each file is where it was, in the Trash, or in quarantine under a session
// that is listed and comes back.

namespace {

constexpr const char* root = "Library/Application Support/Ostrel Loftmere/Quarantine";
constexpr const char* reserve = "Library/Application Support/Ostrel Loftmere/quarantine.reserve";

// What a clean is given, in this order: five things to keep for a while, one of which has vanished meanwhile,
// then what goes to the Trash and what is deleted.
struct Given {
    std::string_view path;
    CleanCategory category;
    bool comesBack;
};
constexpr std::string_view vanished = "docs/vanished";
constexpr Given given[]{
    {"docs/a", CleanCategory::oldDownloads, true},      {"docs/b", CleanCategory::oldDownloads, true},
    {vanished, CleanCategory::oldDownloads, false},     {"more/a", CleanCategory::oldDownloads, true},
    {"docs/folder", CleanCategory::oldDownloads, true}, {"thrown/c", CleanCategory::installers, false},
    {"junk", CleanCategory::userCaches, false},
};

class Scene {
public:
    Scene() {
        for (const char* file : {"docs/a", "docs/b", "more/a", "docs/folder/x/y", "docs/folder/z", "thrown/c",
                                 "junk/1", "junk/sub/2", "junk/sub/3", "junk/other/deeper/4"}) {
            home.file(file, file);
        }
        before_ = precious();
        home.file(reserve, "small, so that a scene is made fast");
    }

    void rest() {}
    void loseReserve() { fs::remove(home.at(reserve)); }

    void clean() {
        AdminQueue queue(nullptr);
        std::vector<ScanItem> items;
        for (const Given& each : given) {
            items.push_back(ScanItem::make(
                {.target = PathTarget{home.at(each.path)}, .size = 1, .category = each.category}));
        }
        const CleanReport report = cleaner(&queue).clean(items, ManualTrigger{});
        std::set<std::string> notDone;
        for (const CleanFailure& failure : report.failures) {
            notDone.insert(failure.itemID);
            messages.push_back(failure.message);
        }
        for (const ScanItem& item : queue.pending()) notDone.insert(item.id);
        account(report, notDone);
    }

    void undo() {
        for (const QuarantineSession& session : Quarantine(home.paths()).sessions()) {
            const auto restored = cleaner(nullptr).restore(session.id, std::nullopt);
            if (!restored) messages.push_back(restored.error().message);
            if (restored) {
                for (const CleanFailure& failure : restored->failures) messages.push_back(failure.message);
            }
        }
    }

    void purge() {
        Quarantine quarantine(home.paths());
        for (const QuarantineSession& session : quarantine.sessions()) {
            const Status purged = quarantine.purge(session.id);
            if (!purged) messages.push_back(purged.error().message);
        }
    }

    // Undoes all that is listed; everything must then be as it was.
    void expectNothingLost(const std::string& what) {
        messages.clear();
        undo();
        EXPECT_THAT(messages, testing::IsEmpty()) << what;
        EXPECT_EQ(precious(), before_) << what;
        const bool isInTrash = fs::exists(home.at(".local/share/Trash/files/c"));
        EXPECT_NE(isInTrash, fs::exists(home.at("thrown/c"))) << what;
    }

    // A purge that was ended or failed has taken all or nothing, and the next one ends it.
    void expectWholeOrGone(const std::string& what) {
        undo();
        EXPECT_THAT(precious(), testing::AnyOf(before_, "")) << what;
        (void)Quarantine(home.paths()).purgeExpired(addSeconds(currentDate(), 86500));
        EXPECT_EQ(test::filesBelow(home.at(root)), "") << what;
    }

    const TemporaryHome home{TemporaryHome::On::memory};
    std::vector<std::string> messages; // of everything that failed

private:
    Cleaner cleaner(AdminQueue* queue) const {
        const AppConfig config{.disposalOverrides = {{"oldDownloads", Disposal::quarantine},
                                                     {"installers", Disposal::trash},
                                                     {"userCaches", Disposal::remove}}};
        return Cleaner(home.paths(), config, {.queue = queue, .remove = nullptr});
    }

    // An honest answer: done means gone from where it was, in the report as in the log; all else was told.
    void account(const CleanReport& report, const std::set<std::string>& notDone) {
        CleanReport counted = report;
        counted.itemsProcessed = 0;
        counted.freedBytes = counted.trashedBytes = counted.quarantinedBytes = 0;
        for (const Given& each : given) {
            const bool done = !notDone.contains(home.at(each.path));
            const bool isThere = fs::exists(home.at(each.path));
            EXPECT_TRUE(done ? !isThere : isThere || each.path == vanished) << each.path;
            if (!done) continue;
            ++counted.itemsProcessed;
            if (each.category == CleanCategory::userCaches) ++counted.freedBytes;
            if (each.category == CleanCategory::installers) ++counted.trashedBytes;
            if (each.comesBack) ++counted.quarantinedBytes;
        }
        EXPECT_EQ(report, counted);
        for (const AuditEntry& entry : AuditLog(home.paths()).recent(100)) {
            if (entry.action != "queued") EXPECT_NE(entry.success, notDone.contains(entry.target));
        }
    }

    std::string precious() const {
        std::string files;
        for (const char* folder : {"docs", "more"}) {
            if (fs::exists(home.at(folder))) files += test::filesBelow(home.at(folder));
        }
        return files;
    }

    std::string before_;
};

using Step = void (Scene::*)();

struct Act {
    const char* name;
    Step before; // undisturbed
    Step disturbed;
    void (Scene::*check)(const std::string&);
};

constexpr Act acts[]{
    {"clean", &Scene::rest, &Scene::clean, &Scene::expectNothingLost},
    {"end of a first clean", &Scene::loseReserve, &Scene::clean, &Scene::expectNothingLost},
    {"undo", &Scene::clean, &Scene::undo, &Scene::expectNothingLost},
    {"purge", &Scene::clean, &Scene::purge, &Scene::expectWholeOrGone},
};

// The call to begin with. A first clean makes the calls of any other until it puts the reserve by, near its
// end.
int64_t firstCall(const Act& act) {
    if (act.before != &Scene::loseReserve) return 1;
    Scene other;
    return test::callsIn([&] { other.clean(); }) - 8;
}

// Goes through an act once for each of its calls, from the first on, until `disturb` tells that there was no
// such call any more. Answers how many there were.
int64_t atEveryCall(const Act& act,
                    const std::function<bool(int64_t, Scene&, const std::function<void()>&)>& disturb) {
    const int64_t first = firstCall(act);
    int64_t n = first;
    for (bool disturbed = true; disturbed; ++n) {
        Scene scene;
        (scene.*act.before)();
        scene.messages.clear();
        disturbed = disturb(n, scene, [&] { (scene.*act.disturbed)(); });
        (scene.*act.check)(std::string(act.name) + " at call " + std::to_string(n));
    }
    EXPECT_GT(n - first, 10);
    return n - first - 1;
}

} // namespace

TEST(Crash, LosesNothingWhereverItComes) {
    for (const Act& act : acts) {
        const int64_t calls = atEveryCall(act, [&](int64_t n, Scene& scene, const auto& operation) {
            const bool died = test::dieAtCall(n, operation);
            // Whoever completes it may be ended as well. Not each time: a large process is slow to fork.
            const bool again = n % 3 == 0 && act.disturbed != &Scene::purge;
            if (again) (void)test::dieAtCall(n * 7 % 40 + 1, [&] { scene.undo(); });
            return died;
        });
        std::cout << "    " << act.name << ": ended at each of " << calls << " calls\n";
    }
}

TEST(FailingCall, LosesNothingAndIsTold) {
    for (const Act& act : acts) {
        int64_t runs = 0;
        for (const int error : {EIO, ENOSPC, EACCES, EROFS, EXDEV, EMFILE}) {
            SCOPED_TRACE(error);
            runs += atEveryCall(act, [&](int64_t n, Scene& scene, const auto& operation) {
                const bool failedOne = test::failCall(n, error, operation);
                for (const std::string& message : scene.messages) {
                    EXPECT_THAT(message, testing::AnyOf(testing::StartsWith("Could not "),
                                                        testing::StartsWith("couldn't be read"),
                                                        testing::HasSubstr("is on another drive")));
                }
                return failedOne;
            });
        }
        std::cout << "    " << act.name << ": " << runs << " failing calls\n";
    }
}
