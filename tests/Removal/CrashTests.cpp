#include "CleanerCore/Platform/Removal.h"
#include "CleanerCore/Removal/Quarantine.h"
#include "tests/Support/FaultRig.h"
#include "tests/Support/TemporaryHome.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <iostream>

using namespace loftmere;
using test::TemporaryHome;
namespace fs = std::filesystem;

// The process is ended at every file system call of a clean, an undo and a purge, and every such call is made
// to fail in every way. Afterwards each file is where it was, or in quarantine under a session that is listed
// and comes back.

namespace {

constexpr const char* root = "Library/Application Support/Ostrel Loftmere/Quarantine";
constexpr const char* precious[] = {"docs/a", "docs/b", "more/a", "docs/folder"};
constexpr const char* junk = "junk";

// A home with four items for the quarantine and one to be deleted.
class Scene {
public:
    Scene() {
        for (const char* file : {"docs/a", "docs/b", "more/a", "docs/folder/x/y", "docs/folder/z"}) {
            home.file(file, file);
        }
        for (const char* file : {"junk/1", "junk/sub/2", "junk/sub/3"}) home.file(file, "");
        before_ = preciousFiles();
    }

    // As a clean does: some to quarantine, one foreseen otherwise than it comes, one deleted.
    void clean() {
        Quarantine quarantine(home.paths());
        auto session = quarantine.beginSession(ManualTrigger{}, 7, currentDate());
        if (session) {
            quarantine.foresee(*session, foreseen());
            for (const char* item : precious)
                account(item, quarantine.add(home.at(item), 1, category, *session));
            const Status finished = quarantine.finish(*session);
            if (!finished) messages.push_back(finished.error().message);
        } else {
            messages.push_back(session.error().message);
        }
        const auto place = Place::open(home.at(junk));
        account(junk, place ? removeItem(*place) : failed(place.error()));
    }

    void undo() {
        Quarantine quarantine(home.paths());
        for (const QuarantineSession& session : quarantine.sessions()) {
            const auto failures = quarantine.restore(session.id, std::nullopt);
            if (!failures) messages.push_back(failures.error().message);
            if (failures) {
                for (const CleanFailure& failure : *failures) messages.push_back(failure.message);
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
        EXPECT_EQ(preciousFiles(), before_) << what;
    }

    // After a purge that was ended or failed: what is still there is listed and comes back.
    void expectRestListed(const std::string& what) {
        int64_t held = 0;
        for (const auto& session : fs::directory_iterator(home.at(root))) {
            const fs::path items = session.path() / "items";
            if (fs::exists(items)) held += std::ranges::count(test::filesBelow(items.string()), '\n');
        }
        undo();
        const std::string back = preciousFiles();
        EXPECT_EQ(std::ranges::count(back, '\n'), held) << what;
    }

    TemporaryHome home;
    std::vector<std::string> messages; // of everything that failed

private:
    static constexpr CleanCategory category = CleanCategory::logs;

    std::vector<ForeseenItem> foreseen() const {
        std::vector<ForeseenItem> items;
        for (const char* item : {"docs/a", "docs/b", "docs/never", "docs/folder"}) {
            items.push_back({home.at(item), 1, category});
        }
        return items;
    }

    // An honest answer: done means gone from where it was, failed means a reason and, for the quarantine,
    // untouched.
    void account(const char* item, const Status& done) {
        EXPECT_EQ(done.has_value(), !fs::exists(home.at(item)))
            << item << ": " << (done ? "" : done.error().message);
        if (!done) messages.push_back(done.error().message);
    }

    std::string preciousFiles() const {
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
    std::vector<Step> before; // undisturbed
    Step disturbed;
    void (Scene::*check)(const std::string&);
};

const std::vector<Act>& acts() {
    static const std::vector<Act> all{
        {"clean", {}, &Scene::clean, &Scene::expectNothingLost},
        {"undo", {&Scene::clean}, &Scene::undo, &Scene::expectNothingLost},
        {"purge", {&Scene::clean}, &Scene::purge, &Scene::expectRestListed},
    };
    return all;
}

void prepare(Scene& scene, const Act& act) {
    for (const Step step : act.before) (scene.*step)();
    scene.messages.clear();
}

} // namespace

TEST(Crash, LosesNothingWhereverItComes) {
    for (const Act& act : acts()) {
        int64_t n = 0;
        for (bool died = true; died;) {
            Scene scene;
            prepare(scene, act);
            died = test::dieAtCall(++n, [&] { (scene.*act.disturbed)(); });
            const std::string what = std::string(act.name) + " ended at call " + std::to_string(n);
            // Whoever completes it may be ended as well.
            if (act.disturbed != &Scene::purge) {
                (void)test::dieAtCall(n * 7 % 40 + 1, [&] { scene.undo(); });
            }
            (scene.*act.check)(what);
        }
        std::cout << "    " << act.name << ": ended at each of " << n - 1 << " calls\n";
        EXPECT_GT(n, 10);
    }
}

TEST(FailingCall, LosesNothingAndIsTold) {
    for (const Act& act : acts()) {
        int64_t runs = 0;
        for (const int error : {EIO, ENOSPC, EACCES, EROFS, EXDEV, EMFILE}) {
            bool failedOne = true;
            for (int64_t n = 1; failedOne; ++n) {
                Scene scene;
                prepare(scene, act);
                failedOne = test::failCall(n, error, [&] { (scene.*act.disturbed)(); });
                for (const std::string& message : scene.messages) {
                    EXPECT_THAT(message, testing::AnyOf(testing::StartsWith("Could not "),
                                                        testing::HasSubstr("is on another drive")));
                }
                (scene.*act.check)(std::string(act.name) + ", error " + std::to_string(error) + " at call " +
                                   std::to_string(n));
                ++runs;
            }
        }
        std::cout << "    " << act.name << ": " << runs << " failing calls\n";
    }
}
