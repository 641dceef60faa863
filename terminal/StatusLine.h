#pragma once

#include "terminal/Console.h"

#include <string>

namespace loftmere {

// One line on the terminal behind standard error that is drawn over and over while the program works. It
// draws nothing where no one is looking.
class StatusLine {
public:
    explicit StatusLine(const Console& console) : console_(console) {}
    ~StatusLine() { erase(); }
    StatusLine(const StatusLine&) = delete;
    StatusLine& operator=(const StatusLine&) = delete;

    // Replaces what the line shows; cut where the terminal ends.
    void draw(const std::string& text);
    void erase();

private:
    const Console& console_;
    bool shown_ = false;
};

// Ctrl-C from now on ends the program at once with 130, with the status line taken away. Does nothing where
// the program was started with Ctrl-C switched off.
void endOnInterrupt();

// From now on the first Ctrl-C is only noted, and answered with `message`, a text that lives for ever; the
// second one ends the program as `endOnInterrupt` tells.
void noteInterrupt(const char* message);

// Whether an interrupt was noted. Any thread.
bool wasInterrupted();

} // namespace loftmere
