#include "terminal/ScanRun.h"

#include "CleanerCore/Support/Text.h"

#include <fmt/format.h>

namespace loftmere {

namespace {

std::string statusOf(Session& session) {
    const AppModel& model = session.model();
    if (!*model.scanStatusCategory) return joined(model.busyLabels(), ", ");
    return fmt::format("{}  {}", traits(**model.scanStatusCategory).displayName,
                       session.shown(model.scanStatus));
}

} // namespace

ExitStatus runScan(Session& session, const std::vector<CleanCategory>& categories) {
    AppModel& model = session.model();
    // Only junk is selected by default, so one scan of all gives each section the ticks that opening it
    // gives.
    const Task<> scan = model.scan(categories, true);
    session.wait([&] { return scan.isDone(); }, [&] { return statusOf(session); });

    ExitStatus status = ExitStatus::done;
    for (const CleanCategory category : categories) {
        const auto result = model.results->find(category);
        if (result == model.results->end())
            session.console().say(fmt::format("no scan looks for {}", rawValue(category)));
        else if (result->second.error)
            status = ExitStatus::failed;
    }
    return status;
}

} // namespace loftmere
