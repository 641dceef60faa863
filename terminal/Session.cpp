#include "terminal/Session.h"

#include "CleanerCore/Files/ConfigStore.h"
#include "CleanerCore/Platform/User.h"
#include "CleanerCore/Support/PathText.h"
#include "CleanerCore/Support/Text.h"
#include "terminal/JsonOutput.h"
#include "terminal/StatusLine.h"

#include <fmt/format.h>

namespace loftmere {

namespace {

constexpr double beatSeconds = 0.1;

} // namespace

AppModel& Session::model() {
    if (!model_) {
        loop_ = std::make_shared<RunLoop>();
        model_ = std::make_unique<AppModel>(loop_, Paths(homeDirectory()));
    }
    return *model_;
}

bool Session::knowsSettings() {
    if (!ConfigStore(model().paths).isDamaged()) return true;
    console_.say(
        fmt::format("the settings in {} cannot be read; what you protect there is not known until they "
                    "are mended or removed",
                    shown(model().paths.configFile())));
    return false;
}

void Session::wait(const std::function<bool()>& done, const std::function<std::string()>& status) {
    auto line = std::make_shared<StatusLine>(console_);
    if (console_.isLive()) tick(line, status, 0);
    loop_->runUntil(done);
}

// The first drawing comes a beat late: what is over by then needs no status. The timers end with the line,
// which is kept by `wait` alone.
void Session::tick(const std::shared_ptr<StatusLine>& line, const std::function<std::string()>& status,
                   int beat) {
    loop_->after(beatSeconds, [this, weak = std::weak_ptr(line), status, beat] {
        const auto still = weak.lock();
        if (!still) return;
        still->draw(std::string(console_.glyphs().spinner[beat % 4]) + " " + status());
        tick(still, status, beat + 1);
    });
}

std::string Session::shown(const std::string& path) {
    const std::string& home = model().paths.home();
    if (path != home && isAtOrUnder(path, home)) return "~" + printable(path.substr(home.size()));
    return printable(path);
}

void Session::print(const Json& document) {
    JsonOutput(console_).value(document);
}

} // namespace loftmere
