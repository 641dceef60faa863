#pragma once

#include "CleanerCore/Process/Shell.h"
#include "CleanerCore/Records/CleanReport.h"
#include "CleanerCore/Removal/AuditLog.h"
#include "CleanerCore/Removal/Cleaning/CleanPlanner.h"
#include "CleanerCore/Removal/Cleaning/Cleaner.h"
#include "CleanerCore/Removal/Quarantine/Quarantine.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace loftmere {

// One clean, item by item: carries out what the planner decides and accounts for it. Used for one list of
// items and thrown away; the calling thread does all the work.
class CleanRun {
public:
    struct Surroundings {
        const Paths& paths;
        const AppConfig& config;
        const CleanPlanner& planner;
        Quarantine& quarantine;
        const Cleaner::Administration& administration;
    };

    CleanRun(const Surroundings& with, const std::vector<ScanItem>& items, TriggerSource trigger, bool dryRun,
             std::optional<Disposal> disposalOverride);

    void handle(const ScanItem& item);

    // What comes after all items: closes the quarantine session, then does root's share. Nobody is asked for
    // a password when the run `isStopped`: root's share waits in the queue.
    void finish(bool isStopped);

    CleanReport report() const;
    const std::vector<AuditEntry>& entries() const { return entries_; }

private:
    void carryOut(const ScanItem& item, const CleanPlanner::Decision& decision);
    void refuse(const ScanItem& item, const CleanPlan& plan);
    void preview(const ScanItem& item, const CleanPlan& plan);
    void evict(const ScanItem& item);
    void runCommand(const ScanItem& item);
    void takeAway(const ScanItem& item, const CleanPlanner::Decision& decision);
    Status act(const ScanItem& item, const CleanPlan& plan, const Place& place);
    Status toQuarantine(const ScanItem& item, const Place& place);
    Status beginSession();
    std::vector<ForeseenItem> foreseen() const;
    void tellFailure(const ScanItem& item, const char* action, const Failure& failure);
    void finishAsAdmin(bool isStopped);
    void enqueueForAdmin();
    void removeAsAdmin();
    void accountAsAdmin(const ScanItem& item, const std::string& path, const Shell::Result& result);

    void skip(const ScanItem& item, const std::string& reason);
    void fail(const ScanItem& item, const std::string& message);
    void log(const char* action, const ScanItem& item, const std::string& target, bool success,
             std::optional<std::string> message = std::nullopt);

    Surroundings with_;
    const std::vector<ScanItem>& items_;
    TriggerSource trigger_;
    bool dryRun_;
    std::optional<Disposal> disposalOverride_;
    CleanReport report_;
    std::vector<AuditEntry> entries_;
    std::vector<ScanItem> adminItems_;
    std::optional<QuarantineSession> session_; // begun by the first item that needs it
};

} // namespace loftmere
