#include "CleanerCore/Platform/Terminal.h"
#include "CleanerCore/Support/ByteFormat.h"
#include "terminal/CleanText.h"
#include "terminal/Layout.h"
#include "terminal/ScanRun.h"
#include "terminal/Verbs.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace loftmere {

namespace {

constexpr const char* stopping = "loftmere: stopping after the item in hand; Ctrl-C again ends at once\n";

struct Options {
    std::vector<std::string> names;
    std::vector<std::string> selected;
    bool all = false;
    bool dryRun = false;
    bool yes = false;
    bool admin = false;
    bool full = false;
};

// One run of the verb.
class Clean {
public:
    Clean(Program& program, const Options& options) : program_(program), options_(options) {}

    ExitStatus run(const std::vector<CleanCategory>& categories) {
        status_ = runScan(program_, categories);
        tellScanErrors(categories);
        tick(categories);
        const CleanPreview preview = look();
        show(preview);
        if (options_.dryRun) {
            if (!preview.report.failures.empty()) status_ = ExitStatus::failed;
            answer(preview.report, true);
        } else if (!mustAsk() || agrees(preview)) {
            clean(categories);
        } else {
            program_.console().say("nothing was changed");
            if (program_.json()) answer(CleanReport{}, false);
        }
        return status_;
    }

private:
    AppModel& model() { return program_.model(); }

    void tellScanErrors(const std::vector<CleanCategory>& categories) {
        for (const CleanCategory category : categories) {
            const auto result = model().results->find(category);
            if (result == model().results->end() || !result->second.error) continue;
            program_.console().say(fmt::format("{} could not be scanned: {}", traits(category).displayName,
                                               printable(*result->second.error)));
        }
    }

    // The scan has ticked what opening the sections ticks; what was asked for instead takes its place.
    void tick(const std::vector<CleanCategory>& categories) {
        items_ = model().items(categories);
        if (options_.all || !options_.selected.empty()) {
            std::set<std::string> wanted(options_.selected.begin(), options_.selected.end());
            std::set<std::string> found;
            for (const ScanItem& item : items_) {
                if (options_.all || wanted.erase(item.id) > 0) found.insert(item.id);
            }
            model().selected = std::move(found);
            for (const std::string& id : wanted) fail(fmt::format("no scan found {}", printable(id)));
        }
        std::erase_if(items_, [&](const ScanItem& item) { return !model().selected->contains(item.id); });
    }

    CleanPreview look() {
        return program_.finish(model().preview(items_, ManualTrigger{}),
                               [] { return "Looking at each item"; });
    }

    // Nobody is asked to agree to what was not shown, also where standard output is for data alone.
    void show(const CleanPreview& preview) {
        if (!program_.json()) return printPreview(program_, items_, preview, options_.full);
        if (!mustAsk()) return;
        program_.console().printTo(Output::person);
        printPreview(program_, items_, preview, options_.full);
        program_.console().printTo(Output::data);
    }

    bool mustAsk() const { return !options_.dryRun && !options_.yes && !items_.empty(); }

    bool agrees(const CleanPreview& preview) {
        const Extent extent = extentOf(items_, preview);
        const std::string answer = asciiLowercased(program_.console().ask(fmt::format(
            "Clean {} ({})? [y/N] ", counted(extent.count, "item"), ByteFormat::string(extent.bytes))));
        return answer == "y" || answer == "yes";
    }

    void clean(const std::vector<CleanCategory>& categories) {
        noteStopSignals(stopping, nullptr);
        const auto isStopped = [] { return notedStop().has_value(); };
        const CleanReport report =
            program_.finish(model().cleanSelected(categories, isStopped), [&] { return progress(); });
        noteStopSignals(nullptr, nullptr); // an answer would come too late from here on
        if (!report.failures.empty()) status_ = ExitStatus::failed;
        answer(report, false);
        if (isStopped()) {
            program_.console().say("interrupted; what is not told above was left as it is");
            status_ = ExitStatus::interrupted;
        } else {
            finishAsAdmin();
        }
    }

    std::string progress() {
        const double share = *model().cleanProgress;
        return fmt::format("{} {:3.0f} %  {}", bar(program_.console(), share), share * 100, program_.busy());
    }

    void finishAsAdmin() {
        const int pending = *model().pendingAdmin;
        if (pending == 0) return;
        if (!options_.admin) {
            program_.console().say(
                fmt::format("{} ({}) left: administrator rights are needed; --admin asks for them",
                            counted(static_cast<size_t>(pending), "item"),
                            ByteFormat::string(*model().pendingAdminBytes)));
            return;
        }
        const auto outcome = program_.finish(model().flushAdminQueue(), [&] { return program_.busy(); });
        if (const auto& words = *model().toast) program_.console().say(printable(*words));
        if (!outcome.failed.empty()) status_ = ExitStatus::failed;
    }

    void answer(const CleanReport& report, bool dryRun) {
        if (program_.json())
            program_.print(JsonCodec<CleanReport>::encode(report));
        else
            printCleanReport(program_, items_, report, dryRun);
    }

    void fail(const std::string& message) {
        program_.console().say(message);
        status_ = ExitStatus::failed;
    }

    Program& program_;
    const Options& options_;
    std::vector<ScanItem> items_;
    ExitStatus status_ = ExitStatus::done;
};

ExitStatus clean(Program& program, const Options& options) {
    const auto categories = categoriesNamed(options.names);
    if (!categories) {
        program.console().say(categories.error().message);
        return ExitStatus::usage;
    }
    if (!options.dryRun && !options.yes && !program.console().canAsk()) {
        program.console().say("nobody is there to ask; give --yes, or --dry-run to see what would happen");
        return ExitStatus::usage;
    }
    if (!program.knowsSettings() && !options.dryRun) {
        program.console().say("nothing was changed");
        return ExitStatus::failed;
    }
    const ExitStatus status = Clean(program, options).run(*categories);
    // A root helper must not outlive the program that started it.
    AppModel::endPrivilegedSession();
    return status;
}

} // namespace

void declareClean(CLI::App& parser, Request& request) {
    const auto options = std::make_shared<Options>();
    CLI::App& verb = addVerb(parser, request, "clean", "Remove what is safe to remove, after asking");
    verb.add_option("NAME", options->names, "Categories and sections to clean; none means all");
    auto* all =
        verb.add_flag("--all", options->all, "Act on everything that is found, not only on what is ticked");
    verb.add_option("--select", options->selected, "Act on the finding with this id instead; may be repeated")
        ->type_name("ID")
        ->allow_extra_args(false)
        ->excludes(all);
    verb.add_flag("--dry-run", options->dryRun, "Show what would happen and change nothing");
    verb.add_flag("--yes", options->yes, "Do not ask");
    verb.add_flag("--admin", options->admin,
                  "In the end remove what needs administrator rights, with one prompt");
    verb.add_flag("--full", options->full, "Show every item, not only the first of each group");
    verb.footer(namesHelp());
    verb.callback([&request, options] {
        request.run = [options](Program& program) { return clean(program, *options); };
    });
}

} // namespace loftmere
