#include "CleanerCore/Platform/Place.h"
#include "CleanerCore/Safety/ProtectedLocations.h"
#include "CleanerCore/Safety/SafetyPolicy.h"
#include "CleanerCore/Support/Crew.h"
#include "CleanerCore/Support/PathText.h"
#include "CleanerCore/Support/Text.h"
#include "tests/Support/TemporaryHome.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <atomic>
#include <random>
#include <set>

using namespace loftmere;

namespace {

using Blocked = SafetyPolicy::Blocked;

// The verdict in one word, or the reason.
std::string told(const SafetyPolicy::Verdict& verdict) {
    if (const auto* blocked = std::get_if<SafetyPolicy::Blocked>(&verdict)) return blocked->reason;
    if (const auto* synced = std::get_if<SafetyPolicy::SyncedCloud>(&verdict))
        return "in " + synced->provider;
    return std::holds_alternative<SafetyPolicy::Allowed>(verdict) ? "allowed" : "needs admin";
}

constexpr const char* top = "Top-level folder";
constexpr const char* personal = "Protected personal data";
constexpr const char* photos = "Photos library";
constexpr const char* leadsOut = "Symlinked folder leads outside your home folder";
constexpr const char* systemPlace = "System location";
constexpr const char* outside = "Outside allowed locations";

// Many ways to write one path, all of which lead the system to the same place. `detours` are paths from the
// top that lead to a folder on the way (a link to it, say), each with what it stands for.
class PathSpellings {
public:
    struct Detour {
        std::string written;
        std::string meant;
    };

    explicit PathSpellings(std::vector<Detour> detours) : detours_(std::move(detours)) {}

    std::string next(std::string path) {
        path = startedElsewhere(std::move(path));
        std::string spelled;
        for (size_t at = path.starts_with('~') ? 1 : 0; at < path.size();) {
            const size_t end = std::min(path.find('/', at + 1), path.size());
            spelled += separator(at == 0);
            spelled += std::string_view(path).substr(at + 1, end - at - 1);
            at = end;
        }
        if (path.starts_with('~')) spelled.insert(0, "~");
        for (uint32_t i = pick(3); i > 0; --i) spelled += '/';
        return spelled;
    }

private:
    std::string startedElsewhere(std::string path) {
        const Detour& detour = detours_[pick(static_cast<uint32_t>(detours_.size()))];
        if (path.starts_with(detour.meant + "/")) path.replace(0, detour.meant.size(), detour.written);
        return path;
    }

    std::string separator(bool first) {
        static const std::vector<std::string> anywhere{"/", "/", "/", "//", "/./", "///", "/.//./"};
        if (first && pick(3) == 0) return "/../" + std::string(pick(3), '/');
        return anywhere[pick(static_cast<uint32_t>(anywhere.size()))];
    }

    uint32_t pick(uint32_t below) { return static_cast<uint32_t>(random_() % below); }

    std::vector<Detour> detours_;
    std::mt19937 random_{20260101};
};

} // namespace

TEST(SafetyPolicy, Verdicts) {
    const test::TemporaryHome home;
    home.folder("Documents");
    home.folder("stuff/deep");
    home.folder(".ssh");
    home.link("link", "/Volumes/Backup");
    home.link("toEtc", "/etc");
    home.link("toStuff", home.at("stuff/deep"));
    home.link("toKeys", ".ssh");
    home.link("toHome", home.path());
    home.link("toDrive", home.folder("Library/CloudStorage/Dropbox"));
    home.link("loop", "loop2");
    home.link("loop2", "loop");
    home.folder("real/keys");
    home.link(".gnupg", home.at("real/keys"));
    const SafetyPolicy policy(home.paths(), {"~/Work/a", "~/Caf\xC3\xA9/", home.at("x/../y"), "Relative"});
    const std::string rule = "Protected by your rules (" + home.at("Work/a") + ")";
    const std::string cafe = "Protected by your rules (" + home.at("Caf\xC3\xA9") + ")";

    const std::vector<std::pair<std::string, std::string>> cases{
        {"", "Not an absolute path"},
        {"Documents/x", "Not an absolute path"},
        {"../x", "Not an absolute path"},
        {std::string("~/Library\0/x", 12), "Not an absolute path"},
        {"~/Library/Caches/com.example.app", "allowed"},
        {"~/Downloads/", top},
        {"~/.config", personal},
        {"~/.config/other", "allowed"},
        {"~/Library/Application Support/MobileSync/Backup", personal},
        {"~/Library/Application Support/MobileSync/Backup/ABC123", "allowed"},
        {"~/Library/Cookies", personal},
        {"~/Library/Cookies/other", "allowed"},
        {"~/.docker", personal},
        {"~/.docker/cache", "allowed"},
        {"~/Work/a", rule},
        {"~/Work/a/b", rule},
        {"~/Work", rule},
        {"~/Workshop", "allowed"},
        {"~/Work/ab", "allowed"},
        {"~/y/z", "Protected by your rules (" + home.at("y") + ")"},
        {"~/Cafe\xCC\x81/menu", cafe},
        {"~/Cafe/menu", "allowed"},
        {"~/caf\xC3\xA9", "allowed"}, // another folder where case counts
        {"~/library/keychains/x", "allowed"},
        {"~/Relative", "allowed"},
        {"~/Pictures/Photos Library.photoslibrary/database", photos},
        {"/Applications/x.photoslibrary", photos},
        {"~/link/file", leadsOut},
        {"~/link", "allowed"},
        {"~/link/", "allowed"},
        {"~/toStuff/x", "allowed"},
        {"~/toStuff/../../Library", top}, // up from where the link leads
        {"~/toEtc/../tmp", top},          // not the home's own "tmp"
        {"~/missing/../Library", top},
        {"~/loop/x", "allowed"}, // nothing can be there
        {"~/toKeys/id_rsa", personal},
        {"~/toHome/.ssh/id_rsa", personal},
        {"~/toHome/Documents", top},
        {"~/toHome/Documents/x", "allowed"},
        {"~/real/keys/secret", personal}, // where a protected link leads
        {"~/real", personal},
        {"~/Library/CloudStorage/GoogleDrive-me/x", "in GoogleDrive"},
        {"~/Library/Mobile Documents/a", "in iCloud Drive"},
        {"~/Library/Mobile Documentsx/a", "allowed"},
        {"~/toDrive/x", "in Dropbox"},
        {"/opt/homebrew/Cellar/x", outside},
        {"/Users/Shared/x", outside},
        {"/Library/Caches", outside},
        {"/Library/Caches/com.example", "needs admin"},
        {"/Library/Logs/../Keychains/x", systemPlace},
        {"/Applications/Missing.app", "needs admin"},
    };
    SafetyPolicy::Batch batch(policy);
    for (const auto& [path, expected] : cases) {
        EXPECT_EQ(told(policy.check(path)), expected) << path;
        EXPECT_EQ(told(batch.check(path)), expected) << path;
    }
    EXPECT_EQ(SafetyPolicy::normalize("~x", "/h"), "/hx");
    EXPECT_EQ(SafetyPolicy::normalize("~~", "/h"), "/h~");
    EXPECT_EQ(SafetyPolicy::normalize("//a/.//b/..//", "/h"), "/a");
    EXPECT_FALSE(SafetyPolicy::safeForAutomation(SafetyPolicy::SyncedCloud{"x"}));
    EXPECT_TRUE(SafetyPolicy::safeForAutomation(SafetyPolicy::NeedsAdmin{}));
}

// The lists themselves, written a second time: an entry that goes or comes must be meant.
TEST(SafetyPolicy, EveryListedPlace) {
    const std::vector<std::pair<std::string, std::string>> places{
        {top, "~|~/Library|~/Library/Caches|~/Library/Logs|~/Library/Application Support|"
              "~/Library/Containers|~/Library/Group Containers|~/Library/Preferences|"
              "~/Library/Developer|~/Library/Developer/Xcode|~/Desktop|~/Documents|~/Downloads|"
              "~/Library/Mobile Documents|~/Library/Mobile Documents/com~apple~CloudDocs|"
              "~/Library/CloudStorage|~/Pictures|~/Movies|~/Music|~/Public|~/Applications|~/.Trash|/|"
              "/Applications|/Library|/Users|/private|/tmp|/opt"},
        {personal, "~/Library/Keychains/x|~/Library/Messages/x|~/Library/Mail/x|~/Library/Calendars/x|"
                   "~/Library/Application Support/AddressBook/x|"
                   "~/Library/Application Support/CallHistoryDB/x|"
                   "~/Library/Application Support/MobileSync/Backup/.lock|~/Library/Safari/x|"
                   "~/Library/Accounts/x|~/Library/Cookies/Cookies.binarycookies|"
                   "~/Library/Group Containers/group.com.apple.notes/x|"
                   "~/Library/Containers/com.apple.Notes/x|~/Library/Photos/x|"
                   "~/Library/Autosave Information/x|~/Library/Application Support/Ostrel Loftmere/x|"
                   "~/Library/LaunchAgents/com.ostrel.loftmere.agent.plist|~/.ssh/x|~/.gnupg/x|~/.aws/x|"
                   "~/.kube/x|~/.config/gcloud/x|~/.docker/config.json|~/.zshrc|~/.bashrc|~/.gitconfig"},
        {systemPlace, "/System/x|/bin/x|/sbin/x|/usr/x|/etc/x|/var/x|/private/etc/x|/private/var/db/x|"
                      "/private/var/vm/x|/Library/Apple/x|/Library/Keychains/x|/Library/Security/x|/cores/x|"
                      "/dev/x|/Volumes/x|/Network/x|/opt/homebrew/bin/x"},
        {"needs admin", "/Applications/x|/Library/Application Support/x|/Library/Caches/x|"
                        "/Library/LaunchAgents/x|/Library/LaunchDaemons/x|/Library/PrivilegedHelperTools/x|"
                        "/Library/Preferences/x|/Library/Logs/x|/Library/Internet Plug-Ins/x|"
                        "/Library/Audio/Plug-Ins/x|/Library/Extensions/x|/Library/Frameworks/x|"
                        "/Library/Receipts/x"},
    };
    namespace Listed = ProtectedLocations;
    const size_t sizes[]{Listed::homeContainers.size() + Listed::systemContainers.size(),
                         Listed::homeBlocked.size(), Listed::systemBlocked.size(), Listed::adminRoots.size()};
    const test::TemporaryHome home;
    const SafetyPolicy policy(home.paths(), {});
    for (size_t i = 0; i < places.size(); ++i) {
        const auto paths = splitOmittingEmpty(places[i].second, '|');
        EXPECT_EQ(paths.size(), sizes[i]) << places[i].first;
        for (const std::string& path : paths) EXPECT_EQ(told(policy.check(path)), places[i].first) << path;
    }
    // A parent that was exchanged for a link after the path itself was judged.
    const test::TemporaryHome elsewhere;
    EXPECT_EQ(told(policy.check(home.at("a/b"), *Place::open(elsewhere.at("b")))), leadsOut);
}

TEST(SafetyPolicy, HomeReachedThroughALinkAndHomeThatIsTheRoot) {
    const test::TemporaryHome real;
    const test::TemporaryHome beside;
    real.link("sub", real.folder("deep"));
    const std::string home = beside.link("home", real.path());
    const SafetyPolicy policy(Paths(home), {});
    EXPECT_EQ(told(policy.check(home + "/x/y")), "allowed");
    EXPECT_EQ(told(policy.check(home + "/sub/y")), "allowed");
    EXPECT_EQ(told(policy.check(home + "/Library")), top);
    EXPECT_EQ(told(policy.check(real.at(".ssh/x"))), outside);
    EXPECT_EQ(told(SafetyPolicy(Paths("/"), {}).check("/srv/data/x")), outside);
}

// The veto must hold however a protected place is written.
class EverySpellingThreaded : public testing::Test {
protected:
    EverySpellingThreaded() {
        for (const std::string_view name : ProtectedLocations::homeContainers)
            add(joinPath(home_.path(), name));
        for (const std::string_view name : ProtectedLocations::homeBlocked) add(joinPath(home_.path(), name));
        for (const std::string_view path : ProtectedLocations::systemContainers) roots_.emplace(path);
        for (const std::string_view path : ProtectedLocations::systemBlocked) roots_.emplace(path);
        add(rule_);
        home_.link("stuff/up", home_.path());
        home_.link("stuff/lib", "../Library");
        home_.link("stuff/around", "up/stuff/lib/../stuff/around2");
        home_.link("stuff/around2", "../stuff/up");
    }

    void add(const std::string& root) {
        home_.folder(root);
        roots_.insert(root);
    }

    PathSpellings spellings() const {
        const std::string& h = home_.path();
        return PathSpellings({{h, h},
                              {"~", h},
                              {"~/stuff/..", h},
                              {"~/missing/..", h},
                              {h + "/../" + lastPathComponent(h), h},
                              {h + "/stuff/up", h},
                              {"~/stuff/around", h},
                              {h + "/stuff/lib/..", h},
                              {"~/stuff/lib", h + "/Library"},
                              {"~/stuff/up/stuff/around/Library/Caches/..", h + "/Library"},
                              {h + "/Caf\xC3\xA9", h + "/Cafe\xCC\x81"},
                              {"~/Documents/../Caf\xC3\xA9", h + "/Cafe\xCC\x81"}});
    }

    // How many spellings of protected roots a judge lets through.
    int64_t letThrough(int ofEach, const std::function<bool(const std::string&)>& allows) {
        const std::vector<std::string> roots(roots_.begin(), roots_.end());
        std::atomic<int64_t> count = 0;
        concurrentPerform(roots.size(), [&](size_t r) {
            auto spelling = spellings();
            for (int i = 0; i < ofEach; ++i) {
                const std::string path = spelling.next(roots[r]);
                if (allows(path) && ++count == 1) firstThrough_ = path;
            }
        });
        return count;
    }

    test::TemporaryHome home_;
    std::string rule_ = home_.at("Cafe\xCC\x81/p");
    std::set<std::string> roots_;
    std::string firstThrough_;
};

TEST_F(EverySpellingThreaded, IsVetoed) {
    const SafetyPolicy policy(home_.paths(), {rule_});
    EXPECT_GE(roots_.size(), 70U);
    EXPECT_EQ(letThrough(5000,
                         [&](const std::string& path) {
                             return !std::holds_alternative<Blocked>(policy.check(path));
                         }),
              0)
        << firstThrough_;
}

TEST_F(EverySpellingThreaded, WouldPassAJudgeOfTheTextAlone) {
    const auto naive = [&](const std::string& path) {
        const std::string tilde = path.starts_with('~') ? home_.path() + path.substr(1) : path;
        return !roots_.contains(standardizedPathText(tilde));
    };
    EXPECT_GT(letThrough(100, naive), 1000);
}

// What the generator writes really leads to the root, else it would prove nothing.
TEST_F(EverySpellingThreaded, LeadsTheSystemToTheRoot) {
    auto spelling = spellings();
    for (const std::string& root : roots_) {
        struct stat meant{};
        if (root == rule_ || ::stat(root.c_str(), &meant) != 0) continue;
        for (int i = 0; i < 300; ++i) {
            std::string path = spelling.next(root);
            if (path.starts_with('~')) path.replace(0, 1, home_.path());
            if (path.contains("missing/")) continue; // no system goes up from what is not there
            struct stat reached{};
            ASSERT_EQ(::stat(path.c_str(), &reached), 0) << path;
            ASSERT_EQ(reached.st_ino, meant.st_ino) << path;
        }
    }
}
