#pragma once

#include "CleanerCore/Records/CleanReport.h"
#include "CleanerCore/Removal/Administrator/AdminQueue.h"
#include "CleanerCore/Removal/Cleaning/Plan.h"
#include "CleanerCore/Support/Result.h"
#include "LoftmereApp/Model/Fields/BasicFields.h"
#include "LoftmereApp/Model/Fields/CleanFields.h"
#include "LoftmereApp/Model/Fields/SafetyFields.h"
#include "LoftmereApp/Model/Fields/ScanFields.h"
#include "LoftmereApp/Model/Task.h"

#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace loftmere {

class JunkScanner;

// Everything that a front end shows and can ask for, without any toolkit: the fields of the groups it derives
// from, and the operations below. One instance for the life of a process. Fields and operations belong to the
// main thread. No operation raises an error: a failure reaches the user as a flashed sentence, as a line of a
// report or as the operation's answer. What is slow runs on a thread of its own and has no effect once the
// model is gone.
class AppModel : public BasicFields, public ScanFields, public CleanFields, public SafetyFields {
public:
    using Scanners = std::function<std::vector<std::unique_ptr<JunkScanner>>(const std::set<CleanCategory>&)>;

    // The current user's home folder. Fails, with a sentence for the user, when there is none or it cannot be
    // listed: everything would look clean there.
    static Result<Paths> currentHome();

    // Reads the stored state, makes the support folders, looks at the volume and raises the process's limit
    // of open files to what a scan needs. Starts no scan and no timer. Called on the main thread. Scans get
    // their scanners from `scanners`; without it, all there are.
    AppModel(std::shared_ptr<MainThread> main, Paths home, Scanners scanners = nullptr);
    ~AppModel();
    AppModel(const AppModel&) = delete;
    AppModel& operator=(const AppModel&) = delete;

    // --- Basics

    // Reads again what is cheap to read: the volume's space, whether the background job is installed, the
    // administrator queue, the quarantine and the log.
    void refreshBasics();

    // Shows a screen and starts what the screen needs. A cleanup screen is scanned unless one of its
    // categories has a result; only those that hold nothing but junk get ticks.
    void open(SidebarItem item);

    // Shows a message for 3.5 seconds, unless another takes its place.
    void flash(std::string message);

    // The labels of all running operations, sorted.
    std::vector<std::string> busyLabels() const;
    bool running(const std::string& key) const;
    bool runningAny(const std::string& prefix) const;

    // The path with the home folder written as "~".
    std::string shortened(const std::string& path) const;

    // Fails, with a sentence for the user, when the settings exist on disk but cannot be read. All defaults
    // hold then, and what the user protects is not known.
    Status settingsState() const;

    // Fails, with a sentence for the user, when the log cannot be written. What cannot be logged should not
    // be removed.
    Status logState() const;

    // --- Scanning (AppModelScan.cpp)

    // Scans the categories, puts what was found into `results` and drops their ticks. With `autoSelectSafe`
    // the safe items of categories that are selected by default are ticked. Does nothing at all when one of
    // the categories is being scanned already; scans of other categories run side by side.
    Task<> scan(std::vector<CleanCategory> categories, bool autoSelectSafe);

    // The items of the categories' results, in the given order.
    std::vector<ScanItem> items(const std::vector<CleanCategory>& categories) const;

    // --- Cleaning (AppModelClean.cpp)

    // What `clean` would do with the items as the disk is now. Changes nothing.
    Task<Plan> preview(std::vector<ScanItem> items, TriggerSource trigger) const;

    // Carries out a plan that was shown. What the plan leaves alone is not touched. Items that did not fail
    // leave `results` and `selected`, even if they were refused or put off. The report is kept and flashed.
    // `isStopped` is asked before each item, on any thread. Once it answers true, the remaining items are
    // left alone.
    Task<CleanReport> clean(Plan plan, std::function<bool()> isStopped = nullptr);

    // Cleans the items without a plan that was shown.
    Task<CleanReport> clean(std::vector<ScanItem> items, TriggerSource trigger,
                            std::function<bool()> isStopped = nullptr);

    // Cleans the ticked items of the categories' results.
    Task<CleanReport> cleanSelected(std::vector<CleanCategory> categories,
                                    std::function<bool()> isStopped = nullptr);

    // The report on one line, such as "Freed 1.2 GB, 3 MB to quarantine, 1 failed".
    static std::string summary(const CleanReport& report, bool dryRun);

    // --- What needs root, undo and the log (AppModelSafety.cpp)

    void refreshAdminQueue(); // `pendingAdmin` and `pendingAdminBytes`

    // Has root remove what is queued, with one prompt, and flashes the outcome.
    Task<AdminQueue::Outcome> flushAdminQueue();

    // Sends the root helper away, if one was started. For the end of the process: the helper must not outlive
    // it.
    static void endPrivilegedSession();

    void refreshSafety(); // all fields of `SafetyFields`

    // Brings back a quarantine session, or the entries with these stored names, and flashes the outcome.
    // Fast: items are moved, not copied. Fails when nothing was done, for one because the session was deleted
    // meanwhile.
    Result<Restored> restore(const QuarantineSession& session,
                             const std::optional<std::set<std::string>>& entries);

    // Deletes a quarantine session for good. Logged as done whatever comes of it. To delete one of
    // `unreadableSessions`, pass a session with that id.
    Status purge(const QuarantineSession& session);

    // Deletes the quarantine sessions that have expired, and logs it.
    Task<ExpiredPurge> purgeExpired();

    // The newest `limit` entries of the log, newest first. `audit` holds the first 300 of them.
    Task<std::vector<AuditEntry>> history(size_t limit) const;

    // What the safety policy says of each path, in the given order. Paths need not exist; "~" is the home.
    Task<std::vector<PathVerdict>> check(std::vector<std::string> candidates) const;

private:
    struct Work;
    const std::unique_ptr<const Work> work_; // last, so that it ends first
};

} // namespace loftmere
