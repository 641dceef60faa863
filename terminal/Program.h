#pragma once

#include "CleanerCore/Support/Text.h"
#include "LoftmereApp/Model/AppModel.h"
#include "LoftmereApp/Model/MainThread.h"
#include "terminal/Console.h"

#include <functional>
#include <memory>
#include <string>

namespace loftmere {

// What the program answers to the shell. After a stop signal it is 128 and the signal's number.
enum class ExitStatus { done = 0, failed = 1, usage = 2 };

// What every verb works with: the console, the model of the current user and the loop that drives it.
class Program {
public:
    Program(Console& console, bool json, Paths home);

    Console& console() { return console_; }
    bool json() const { return json_; } // the answer is to be JSON
    AppModel& model() { return model_; }

    // Whether the user's settings could be read, or do not exist. Says so when not.
    bool knowsSettings();

    // Runs the loop until the task is done and answers its value. Meanwhile a person sees `status`, asked
    // again ten times a second.
    template <class T> auto finish(const Task<T>& task, const std::function<std::string()>& status) {
        wait([&] { return task.isDone(); }, status);
        return task.value();
    }

    // The status of a stop signal that was noted, else `status`.
    static ExitStatus stoppedOr(ExitStatus status);

    // A path as people read it: printable, with "~" for the home folder.
    std::string shown(const std::string& path) const { return printable(model_.shortened(path)); }

    // The labels of what the model is doing.
    std::string busy() const;

    // Prints a JSON document as JsonOutput does.
    void print(const Json& document) { JsonOutput(console_).value(document); }

private:
    void wait(const std::function<bool()>& done, const std::function<std::string()>& status);
    void tick(const std::shared_ptr<StatusLine>& line, const std::function<std::string()>& status, int beat);

    Console& console_;
    const bool json_;
    const std::shared_ptr<RunLoop> loop_ = std::make_shared<RunLoop>();
    AppModel model_;
};

} // namespace loftmere
