#pragma once

#include "CleanerCore/Process/Shell.h"

#include <sys/types.h>

#include <string>
#include <vector>

namespace loftmere::test {

using Words = std::vector<std::string>;

// Runs the real program with the arguments, without a terminal, to its end. Of the environment it knows the
// home and what is given here, "NAME=value". What follows these may be a command that starts the program,
// which gets the program and its arguments as its own.
Shell::Result runTerminal(const std::string& home, const Words& arguments, const Words& environment = {});

// The program with all its streams on a terminal of its own, as a person has it.
class TerminalScreen {
public:
    TerminalScreen(const std::string& home, const Words& arguments, int columns,
                   const Words& environment = {});
    ~TerminalScreen();
    TerminalScreen(const TerminalScreen&) = delete;
    TerminalScreen& operator=(const TerminalScreen&) = delete;

    void type(const std::string& keys);
    void signal(int number) const;

    // Everything shown so far, once `text` is among it; all there is when the program ends without showing
    // it.
    std::string waitFor(const std::string& text);

    // Waits for the end; `out` is everything that was shown, line ends as "\n".
    Shell::Result finish();

private:
    bool readMore();

    pid_t child_ = -1;
    int terminal_ = -1;
    std::string shown_;
};

} // namespace loftmere::test
