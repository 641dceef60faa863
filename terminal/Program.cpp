#include "terminal/Program.h"

#include "CleanerCore/Platform/Terminal.h"

namespace loftmere {

namespace {

constexpr double beatSeconds = 0.1;

} // namespace

Program::Program(Console& console, bool json, Paths home)
    : console_(console), json_(json), model_(loop_, std::move(home)) {}

bool Program::knowsSettings() {
    const Status known = model_.settingsState();
    if (!known) console_.say(printable(known.error().message));
    return known.has_value();
}

ExitStatus Program::stoppedOr(ExitStatus status) {
    const auto stop = notedStop();
    return stop ? static_cast<ExitStatus>(*stop) : status;
}

std::string Program::busy() const {
    return joined(model_.busyLabels(), ", ");
}

void Program::wait(const std::function<bool()>& done, const std::function<std::string()>& status) {
    const auto line = std::make_shared<StatusLine>(console_);
    if (console_.isLive()) tick(line, status, 0);
    loop_->runUntil(done);
}

// The first drawing comes a beat late: what is over by then needs no status. Only `wait` keeps the line, so
// the timers end with it.
void Program::tick(const std::shared_ptr<StatusLine>& line, const std::function<std::string()>& status,
                   int beat) {
    loop_->after(beatSeconds, [this, weak = std::weak_ptr(line), status, beat] {
        const auto still = weak.lock();
        if (!still) return;
        still->draw(std::string(console_.glyphs().spinner[beat % 4]) + " " + status());
        tick(still, status, beat + 1);
    });
}

} // namespace loftmere
