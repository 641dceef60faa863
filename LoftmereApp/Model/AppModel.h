#pragma once

#include "CleanerCore/Files/Paths.h"
#include "CleanerCore/Records/AppConfig.h"
#include "CleanerCore/Records/CategoryResult.h"
#include "CleanerCore/Records/CleanReport.h"
#include "CleanerCore/Records/TriggerSource.h"
#include "CleanerCore/Records/VolumeSpace.h"
#include "CleanerCore/Removal/Administrator/AdminQueue.h"
#include "CleanerCore/Removal/AuditEntry.h"
#include "CleanerCore/Removal/Quarantine/QuarantineSession.h"
#include "CleanerCore/Scanning/ScannerRegistry.h"
#include "LoftmereApp/Model/Background.h"
#include "LoftmereApp/Model/CleanPreview.h"
#include "LoftmereApp/Model/Published.h"
#include "LoftmereApp/Model/SidebarItem.h"
#include "LoftmereApp/Model/Task.h"

#include <map>
#include <set>
#include <string>
#include <vector>

namespace loftmere {

// Everything that a front end shows and can ask for, without any toolkit. One instance for the life of a
// process. All fields and operations belong to the main thread; no operation blocks it, and none raises an
// error: a failure reaches the user as a flashed sentence or as a line of a report. An operation's slow part
// runs on a thread of its own and has no effect once the model is gone.
class AppModel {
    const std::shared_ptr<MainThread> main_;

public:
    using Scanners = std::function<ScannerRegistry::Scanners(const std::set<CleanCategory>&)>;

    // Reads the stored state, makes the support folders and looks at the volume. Starts no scan and no timer.
    // Called on the main thread. `scanners` is where a scan gets its scanners from.
    AppModel(std::shared_ptr<MainThread> main, Paths home, Scanners scanners = ScannerRegistry::scanners);
    AppModel(const AppModel&) = delete;
    AppModel& operator=(const AppModel&) = delete;

    const Paths paths;
    Published<AppConfig> config; // every assignment saves it; a failure of that is dropped

    // What the last scan of each category found. A category that was never scanned has no entry.
    Published<std::map<CleanCategory, CategoryResult>> results{*main_};
    Published<std::set<std::string>> selected{*main_}; // the ids of the items that are ticked
    Published<std::set<CleanCategory>> scanningCategories{*main_};
    Published<std::map<std::string, std::string>> ops{*main_}; // running operations: key to label
    Published<double> cleanProgress{*main_};                   // of the running clean, 0 to 1
    Published<std::string> scanStatus{*main_};                 // what the scan is looking at
    Published<std::optional<CleanCategory>> scanStatusCategory{*main_};
    Published<std::optional<CleanReport>> lastReport{*main_};
    Published<std::optional<VolumeSpace>> space{*main_};        // of the home's volume
    Published<std::vector<QuarantineSession>> sessions{*main_}; // newest first
    Published<std::vector<AuditEntry>> audit{*main_};           // the newest 300, newest first
    Published<int> pendingAdmin{*main_};                        // items that wait for administrator rights
    Published<int64_t> pendingAdminBytes{*main_};
    Published<bool> agentInstalled{*main_}; // the background job's property list is there
    Published<bool> showOnboarding{*main_, false};
    Published<SidebarItem> section{*main_, SidebarItem::smartCare};
    Published<std::optional<std::string>> toast{*main_}; // the message of the moment

    // Reads anew what is cheap to read: the volume's space, the background job, the administrator queue,
    // quarantine and log.
    void refreshBasics();
    void refreshSafety();     // `sessions` and `audit`
    void refreshAdminQueue(); // `pendingAdmin` and `pendingAdminBytes`

    // Scans the categories, puts what was found into `results` and drops their ticks. With `autoSelectSafe`
    // the safe items of categories that are selected by default are ticked. Does nothing at all when one of
    // the categories is being scanned already; scans of other categories run side by side.
    Task<> scan(std::vector<CleanCategory> categories, bool autoSelectSafe);

    // What `clean` would do with the items as the disk stands now. Changes nothing.
    Task<CleanPreview> preview(std::vector<ScanItem> items, TriggerSource trigger) const;

    // Cleans the items. Those that did not fail leave `results` and `selected`, also when they were refused
    // or put off; the report is kept and flashed. `isStopped` is asked before each item, on any thread; once
    // it answers true the items that are left stay as and where they are.
    Task<CleanReport> clean(std::vector<ScanItem> items, TriggerSource trigger,
                            std::function<bool()> isStopped = nullptr);

    // Cleans what is ticked of the categories' results.
    Task<CleanReport> cleanSelected(std::vector<CleanCategory> categories,
                                    std::function<bool()> isStopped = nullptr);

    // Has root remove what is queued, with one prompt, and flashes the outcome.
    Task<AdminQueue::Outcome> flushAdminQueue();

    // Brings back a quarantine session, or the entries with these stored names, and flashes the outcome.
    // Fast: items are moved, not copied.
    Result<std::vector<CleanFailure>> restore(const QuarantineSession& session,
                                              const std::optional<std::set<std::string>>& entries);

    // Gives up a quarantine session for good. Logged as done whatever comes of it.
    Status purge(const QuarantineSession& session);

    // Shows a screen and starts what the screen needs. A cleanup screen is scanned unless one of its
    // categories has a result; only those that hold nothing but junk get ticks.
    void open(SidebarItem item);

    // Shows a message for 3.5 seconds, unless another takes its place.
    void flash(std::string message);

    // The items of the categories' results, in the given order.
    std::vector<ScanItem> items(const std::vector<CleanCategory>& categories) const;

    // The labels of all running operations, sorted.
    std::vector<std::string> busyLabels() const;

    bool running(const std::string& key) const;
    bool runningAny(const std::string& prefix) const;

private:
    template <class Body> Background<Body> background(Body body) const {
        return Background<Body>(main_, life_, std::move(body));
    }
    // Posts `change` as a main-thread task that does nothing once the model is gone. Any thread.
    void postWhileAlive(std::function<void()> change) const;
    std::function<void(CleanCategory, const std::string&)> statusReporter();
    void store(const std::vector<CategoryResult>& found, bool autoSelectSafe);
    std::function<void(int64_t, int64_t)> progressReporter();
    void begin(const std::string& key, std::string label);
    void end(const std::string& key);
    void forget(const std::vector<ScanItem>& items, const CleanReport& report);
    void load(SidebarItem item);
    void scanIfNew(SidebarItem item);

    const Scanners scanners_;
    // Ends with the model. Last, so that it ends first.
    const std::shared_ptr<const bool> life_ = std::make_shared<const bool>(true);
};

} // namespace loftmere
