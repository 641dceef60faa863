#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace loftmere::test {

// How the real program ended.
struct TerminalResult {
    int status = -1; // the exit status, or minus the signal that ended it
    std::string out;
    std::string err;
};

struct TerminalOptions {
    std::string home;
    std::vector<std::string> environment = {}; // "NAME=value"; nothing else of ours is passed on
};

// Runs the program with the arguments, without a terminal, to its end.
TerminalResult runTerminal(const TerminalOptions& options, const std::vector<std::string>& arguments);

// The program with all its streams on a terminal of its own, as a person has it.
class TerminalScreen {
public:
    TerminalScreen(const TerminalOptions& options, const std::vector<std::string>& arguments, int columns);
    ~TerminalScreen();
    TerminalScreen(const TerminalScreen&) = delete;
    TerminalScreen& operator=(const TerminalScreen&) = delete;

    void type(const std::string& keys);

    // Everything shown so far, once `text` is among it; all there is when the program ends without showing
    // it.
    std::string waitFor(const std::string& text);

    // Waits for the end; `out` is everything that was shown, line ends as "\n".
    TerminalResult finish();

private:
    bool readMore();

    pid_t child_ = -1;
    int terminal_ = -1;
    std::string shown_;
};

} // namespace loftmere::test
