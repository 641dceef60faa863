#include "CleanerCore/Support/Text.h"
#include "terminal/CategoryNames.h"
#include "terminal/ScanReport.h"
#include "terminal/ScanRun.h"
#include "terminal/Verbs.h"

#include <CLI/CLI.hpp>

namespace loftmere {

namespace {

struct ScanOptions {
    std::vector<std::string> names;
    bool full = false;
};

ExitStatus scan(Session& session, const ScanOptions& options) {
    const auto categories = categoriesNamed(options.names);
    if (!categories) {
        session.console().say(categories.error().message);
        return ExitStatus::usage;
    }
    (void)session.knowsSettings();
    const ExitStatus status = runScan(session, *categories);
    if (session.json())
        printScanJson(session, *categories);
    else
        printScan(session, *categories, options.names, options.full);
    return status;
}

} // namespace

void declareScan(CLI::App& program, Request& request) {
    const auto options = std::make_shared<ScanOptions>();
    CLI::App& verb =
        addVerb(program, request, "scan", "Find what could go, how much it is, why, and at what risk");
    verb.add_option("NAME", options->names, "Categories and sections to look through; none means all");
    verb.add_flag("--full", options->full, "Show every finding, not only the largest of each category");
    verb.footer(namesHelp());
    verb.callback([&request, options] {
        request.run = [options](Session& session) { return scan(session, *options); };
    });
}

} // namespace loftmere
