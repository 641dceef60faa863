#include "CleanerCore/Platform/Terminal.h"
#include "CleanerCore/Support/ByteCount.h"
#include "terminal/CleanText.h"
#include "terminal/Findings.h"
#include "terminal/Verbs.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace loftmere {

namespace {

constexpr const char* stopping = "loftmere: stopping after the item in hand\n";
constexpr const char* stillStopping = "loftmere: still at the item in hand; the log is written after it\n";

struct Options {
    std::vector<std::string> names;
    std::vector<std::string> selected;
    bool all = false;
    bool dryRun = false;
    bool yes = false;
    bool admin = false;
    bool verbose = false;
};

// One run of the verb.
class Clean {
public:
    Clean(Program& program, const Options& options) : program_(program), options_(options) {}

    ExitStatus run(const std::vector<CleanCategory>& categories) {
        status_ = runScan(program_, categories);
        sayScanErrors(categories);
        tick(categories);
        const Plan plan =
            program_.finish(model().preview(items_, ManualTrigger{}), [] { return "Looking at each item"; });
        show(plan);
        const Extent extent = extentOf(plan);
        // Whoever gave --yes wants every decision carried out and logged, refusals too.
        if (options_.dryRun || (extent.count == 0 && !options_.yes)) {
            const CleanReport report = plan.report();
            if (!report.failures.empty()) status_ = ExitStatus::failed;
            answer(report, true);
        } else if (options_.yes || agrees(extent)) {
            clean(plan);
        } else {
            console().say("nothing was changed");
            if (program_.json()) answer(CleanReport{}, false);
        }
        return status_;
    }

private:
    AppModel& model() { return program_.model(); }
    Console& console() { return program_.console(); }

    void sayScanErrors(const std::vector<CleanCategory>& categories) {
        for (const CleanCategory category : categories) {
            const auto result = model().results->find(category);
            if (result == model().results->end() || !result->second.error) continue;
            console().say(fmt::format("{} could not be scanned: {}", traits(category).displayName,
                                      shownMessage(*result->second.error)));
        }
    }

    // The scan has ticked what opening the sections ticks. What was asked for instead takes its place.
    void tick(const std::vector<CleanCategory>& categories) {
        items_ = model().items(categories);
        if (options_.all || !options_.selected.empty()) {
            std::set<std::string> wanted(options_.selected.begin(), options_.selected.end());
            std::set<std::string> found;
            for (const ScanItem& item : items_) {
                if (options_.all || wanted.erase(item.id) > 0) found.insert(item.id);
            }
            model().selected = std::move(found);
            for (const std::string& id : wanted) sayNotFound(id);
        }
        std::erase_if(items_, [&](const ScanItem& item) { return !model().selected->contains(item.id); });
    }

    void sayNotFound(const std::string& id) {
        console().say(
            fmt::format("no scan found \"{}\"; \"loftmere scan --json\" lists the ids", printable(id)));
        status_ = ExitStatus::failed;
    }

    // Puts the preview on the screen before anything is asked or done, also where standard output leads
    // elsewhere.
    void show(const Plan& plan) {
        const auto print = [&](Output output) {
            console().printTo(output);
            printPreview(program_, plan, options_.verbose);
            console().printTo(Output::data);
        };
        if (!program_.json()) print(Output::data);
        const bool isSeen = !program_.json() && console().isScreen(Output::data);
        if (!isSeen && !options_.dryRun && console().isScreen(Output::person)) print(Output::person);
    }

    bool agrees(const Extent& extent) {
        const std::string answer = asciiLowercased(console().ask(fmt::format(
            "Clean {} ({})? [y/N] ", counted(extent.count, "item"), ByteFormat::string(extent.bytes))));
        return answer == "y" || answer == "yes";
    }

    void clean(const Plan& plan) {
        noteStopSignals(stopping, stillStopping);
        const auto isStopped = [] { return notedStop().has_value(); };
        const CleanReport report =
            program_.finish(model().clean(plan, isStopped), [&] { return progress(); });
        if (!report.failures.empty()) status_ = ExitStatus::failed;
        answer(report, false);
        if (isStopped()) {
            console().say("interrupted; what is not listed above was left as it is");
        } else {
            finishAsAdmin();
            purgeExpired();
        }
        status_ = program_.stoppedOr(status_);
    }

    std::string progress() {
        const double share = *model().cleanProgress;
        return fmt::format("{} {:3.0f} %  {}", bar(console(), share), share * 100, program_.busy());
    }

    void finishAsAdmin() {
        const int pending = *model().pendingAdmin;
        if (pending == 0) return;
        if (!options_.admin) {
            console().say(fmt::format("{} ({}) left: administrator rights are needed; --admin asks for them",
                                      counted(static_cast<size_t>(pending), "item"),
                                      ByteFormat::string(*model().pendingAdminBytes)));
            return;
        }
        const auto outcome = program_.finish(model().flushAdminQueue(), [&] { return program_.busy(); });
        if (const auto& words = *model().toast) console().say(shownMessage(*words));
        if (!outcome.failed.empty()) status_ = ExitStatus::failed;
    }

    void purgeExpired() {
        const auto purge =
            program_.finish(model().purgeExpired(), [] { return "Deleting what has expired in quarantine"; });
        if (!purge.purged.empty()) console().say("purged " + shownPurge(purge));
    }

    void answer(const CleanReport& report, bool dryRun) {
        if (program_.json())
            program_.print(JsonCodec<CleanReport>::encode(report));
        else
            printCleanReport(program_, items_, report, dryRun);
    }

    Program& program_;
    const Options& options_;
    std::vector<ScanItem> items_;
    ExitStatus status_ = ExitStatus::done;
};

ExitStatus clean(Program& program, const Options& options) {
    Console& console = program.console();
    const auto categories = categoriesNamed(options.names);
    if (!categories) {
        console.say(categories.error().message);
        return ExitStatus::usage;
    }
    if (!options.dryRun && !options.yes && !console.canAsk()) {
        console.say("nobody is there to ask; give --yes, or --dry-run to see what would happen");
        return ExitStatus::usage;
    }
    if (!program.knowsSettings() && !options.dryRun) {
        console.say("nothing was changed");
        return ExitStatus::failed;
    }
    if (const Status canLog = program.model().logState(); !canLog && !options.dryRun) {
        console.say(printable(canLog.error().message));
        return ExitStatus::failed;
    }
    const ExitStatus status = Clean(program, options).run(*categories);
    AppModel::endPrivilegedSession();
    return status;
}

} // namespace

void declareClean(CLI::App& parser, Request& request) {
    const auto options = std::make_shared<Options>();
    CLI::App& verb = addVerb(parser, request, "clean", "Remove what is safe to remove, after asking");
    addWords(verb, "NAME", options->names, "Categories and sections to clean; none means all");
    auto* all =
        verb.add_flag("--all", options->all, "Act on everything that is found, not only on what is ticked");
    addWords(verb, "--select", options->selected,
             "Act on the finding with this id instead; may be\n"
             "repeated. The id of a file or folder is its path;\n"
             "\"loftmere scan --json\" lists all ids")
        ->type_name("ID")
        ->excludes(all);
    verb.add_flag("--dry-run", options->dryRun, "Show what would happen and change nothing");
    verb.add_flag("--yes", options->yes, "Do not ask");
    verb.add_flag("--admin", options->admin,
                  "In the end remove what needs administrator rights, with one prompt");
    verb.add_flag("--verbose", options->verbose,
                  "List every item, not only the first 15 of each\ngroup, and whole paths");
    verb.footer(namesHelp());
    verb.callback([&request, options] {
        request.run = [options](Program& program) { return clean(program, *options); };
    });
}

} // namespace loftmere
