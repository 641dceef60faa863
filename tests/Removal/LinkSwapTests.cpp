#include "CleanerCore/Files/JSONStore.h"
#include "CleanerCore/Platform/Removal.h"
#include "CleanerCore/Removal/Cleaning/Cleaner.h"
#include "tests/Support/SwapRig.h"
#include "tests/Support/TemporaryHome.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <iostream>

using namespace loftmere;
using test::SwapRig;
using test::TemporaryHome;
namespace fs = std::filesystem;

// While a folder is deleted, moved or restored, a thread keeps exchanging one of its subfolders, or a parent
// of it, for a link to a folder outside. The operations must never reach what is there; done the naive way
// they soon do.

namespace {

constexpr int canaries = 20;

void touch(const std::string& path) {
    ::close(::open(path.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600));
}

void fill(const std::string& folder) {
    ::mkdir(folder.c_str(), 0700);
    for (int i = 0; i < canaries; ++i) touch(folder + "/" + std::to_string(i));
}

int64_t entriesOf(const std::string& folder) {
    return std::distance(fs::directory_iterator(folder), {});
}

using Operation = std::function<void(const std::string& home)>;

void removeNaively(const std::string& path) {
    std::error_code error;
    if (fs::is_directory(fs::symlink_status(path, error))) {
        for (auto entry = fs::directory_iterator(path, error); !error && entry != fs::directory_iterator();
             entry.increment(error)) {
            removeNaively(entry->path());
        }
    }
    std::remove(path.c_str());
}

bool isReallyAt(const std::string& path) {
    char real[4096];
    return ::realpath(path.c_str(), real) != nullptr && path == real;
}

// How many exchanges a test goes through: LOFTMERE_EXCHANGES, else a number that takes seconds.
int64_t wantedExchanges() {
    const char* asked = std::getenv("LOFTMERE_EXCHANGES"); // NOLINT(concurrency-mt-unsafe)
    return asked != nullptr ? std::atoll(asked) : 30000;
}

struct Outcome {
    int64_t exchanges = 0;
    bool isHarmed = false;
};

// Rounds of `operation` in a world that `prepare` sets up anew each time, until the exchanges are through or
// the outside is harmed. Only exchanges during the operation count.
Outcome rounds(const std::string& home, const SwapRig& rig, const std::function<void()>& prepare,
               const std::function<bool()>& isHarmed, const Operation& operation) {
    Outcome outcome;
    while (outcome.exchanges < wantedExchanges() && !outcome.isHarmed) {
        prepare();
        const int64_t before = rig.exchanges();
        operation(home);
        outcome.exchanges += rig.exchanges() - before;
        outcome.isHarmed = isHarmed();
    }
    std::cout << "    " << outcome.exchanges << " exchanges" << (outcome.isHarmed ? ", harmed" : "")
              << std::endl;
    return outcome;
}

// A subfolder of "tree" is exchanged for a link to a folder beside it.
Outcome swapSubfolder(const Operation& operation) {
    const TemporaryHome home(TemporaryHome::On::memory);
    fill(home.at("outside"));
    const std::string tree = home.at("tree");
    const std::string parked = home.at("parked");
    const SwapRig rig(home.at("tree/sub"), parked);
    const auto prepare = [&] {
        for (const std::string& left : {tree, parked}) {
            while (!removeItem(*Place::open(left)) && fs::exists(fs::symlink_status(left))) {
            }
        }
        fill(tree + ".new"); // without the subfolder's name the neighbour has nothing to exchange
        fill(tree + ".new/sub");
        fs::create_directory_symlink(home.at("outside"), parked);
        fs::rename(tree + ".new", tree);
    };
    const auto isHarmed = [&] { return entriesOf(home.at("outside")) != canaries; };
    return rounds(home.path(), rig, prepare, isHarmed, operation);
}

// The folder "parent", with "tree" to remove and "deeper" to bring back to, is exchanged for a link to one
// outside the home that has both, too.
Outcome swapParent(const Operation& operation) {
    const TemporaryHome home(TemporaryHome::On::memory);
    const TemporaryHome outside(TemporaryHome::On::memory);
    fill(outside.at("tree"));
    outside.folder("deeper");
    home.folder("parent/deeper");
    home.link("parked", outside.path());
    // The real parent is now at the one place, now at the other; the descriptor always leads to it.
    const FileDescriptor real(::open(home.at("parent").c_str(), O_DIRECTORY | O_RDONLY));
    const SwapRig rig(home.at("parent"), home.at("parked"));
    const auto prepare = [&] {
        touch(home.at("stored"));
        if (::mkdirat(real.get(), "tree", 0700) != 0) return;
        for (int i = 0; i < canaries; ++i) {
            const std::string name = "tree/" + std::to_string(i);
            ::close(::openat(real.get(), name.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600));
        }
    };
    const auto isHarmed = [&] {
        return !fs::exists(outside.at("tree")) || entriesOf(outside.at("tree")) != canaries ||
               entriesOf(outside.at("deeper")) != 0;
    };
    return rounds(home.path(), rig, prepare, isHarmed, operation);
}

// What a caller does: the place is judged by its real path, and then acted on.
void judgeAndRemove(const std::string& home) {
    const auto place = Place::open(home + "/parent/tree");
    if (place && place->realPath() == home + "/parent/tree") (void)removeItem(*place);
}

void judgeAndRemoveNaively(const std::string& home) {
    if (isReallyAt(home + "/parent/tree")) removeNaively(home + "/parent/tree");
}

Operation cleanAs(Disposal disposal) {
    return [disposal](const std::string& home) {
        const ScanItem tree = ScanItem::make({.target = PathTarget{home + "/parent/tree"}, .size = 1});
        Cleaner(Paths(home), {}).clean({tree}, ManualTrigger{}, false, disposal);
    };
}

void moveBack(const std::string& home) {
    static int64_t turn = 0; // what was brought back stays: the next one needs another name
    Quarantine quarantine{Paths(home)};
    auto session = quarantine.beginSession(ManualTrigger{}, 7, currentDate());
    if (!session) return;
    const std::string folder = Paths(home).quarantineDir() + "/" + session->id;
    session->entries = {{home + "/parent/deeper/" + std::to_string(++turn), "0-stored", 1}};
    ::rename((home + "/stored").c_str(), (folder + "/items/0-stored").c_str());
    if (JSONStore::save(*session, folder + "/manifest.json"))
        (void)quarantine.restore(session->id, std::nullopt);
}

void moveBackNaively(const std::string& home) {
    const std::string folder = home + "/parent/deeper";
    if (isReallyAt(folder)) ::rename((home + "/stored").c_str(), (folder + "/back").c_str());
}

} // namespace

TEST(LinkSwapThreaded, NothingReachesWhatIsOutside) {
    const auto removeTree = [](const std::string& home) { (void)removeItem(*Place::open(home + "/tree")); };
    EXPECT_FALSE(swapSubfolder(removeTree).isHarmed);
    for (const Operation& operation : {Operation(judgeAndRemove), Operation(moveBack),
                                       cleanAs(Disposal::remove), cleanAs(Disposal::quarantine)}) {
        EXPECT_FALSE(swapParent(operation).isHarmed);
    }
}

TEST(LinkSwapThreaded, NaiveWaysSoonDo) {
    EXPECT_TRUE(swapSubfolder([](const std::string& home) { removeNaively(home + "/tree"); }).isHarmed);
    EXPECT_TRUE(swapParent(judgeAndRemoveNaively).isHarmed);
    EXPECT_TRUE(swapParent(moveBackNaively).isHarmed);
}
