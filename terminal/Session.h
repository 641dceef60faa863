#pragma once

#include "LoftmereApp/Model/AppModel.h"
#include "LoftmereApp/Model/MainThread.h"
#include "terminal/Console.h"

#include <memory>
#include <string>

namespace loftmere {

// What the program answers to the shell.
enum class ExitStatus { done = 0, failed = 1, usage = 2, interrupted = 130 };

// What every verb works with: the console, the model of the current user and the loop that drives it.
class Session {
public:
    Session(Console& console, bool json) : console_(console), json_(json) {}

    Console& console() { return console_; }
    bool json() const { return json_; } // the answer is to be JSON

    // Made on first use, so that what needs no model does not pay for it.
    AppModel& model();

    // False, having said so, when the user's settings stand on disk and cannot be read: all defaults hold
    // then, and what is protected is not known.
    bool knowsSettings();

    // Runs the loop until `done`. Meanwhile a person sees `status`, asked anew ten times a second.
    void wait(const std::function<bool()>& done, const std::function<std::string()>& status);

    // A path as people read it: printable, with "~" for the home folder.
    std::string shown(const std::string& path);

    // Prints a JSON document as JsonOutput does.
    void print(const Json& document);

private:
    void tick(const std::shared_ptr<class StatusLine>& line, const std::function<std::string()>& status,
              int beat);

    Console& console_;
    const bool json_;
    std::shared_ptr<RunLoop> loop_;
    std::unique_ptr<AppModel> model_;
};

} // namespace loftmere
