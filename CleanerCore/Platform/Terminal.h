#pragma once

#include <optional>
#include <string>
#include <string_view>

// The terminal that a program may have been started from, and the signals that ask it to stop. Main thread,
// unless said otherwise.
namespace loftmere {

enum class StandardStream { input, output, error };

// For the first line of main(). Fills closed standard streams, so that no file opened later takes their
// place. Makes a write to a reader that has gone away fail instead of ending the program. Lets the ends of
// children be waited for, whatever the program that started this one has set.
void prepareStandardStreams();

bool isTerminal(StandardStream stream);

// The width of the terminal behind the stream; absent where there is none or its width is unknown.
std::optional<int> terminalColumns(StandardStream stream);

enum class Written { all, readerGone, failed };

// Writes all of the text, unless that is impossible.
Written writeText(StandardStream stream, std::string_view text);

// The next line of standard input, without its end. Empty at the end of input.
std::string readLine();

// The folder that relative paths start from; absent when it was removed.
std::optional<std::string> currentFolder();

// One line on the terminal behind standard error that is drawn again and again. Whatever answers a stop
// signal erases it first.
void drawLiveLine(std::string_view text);
void eraseLiveLine();

// From now on Ctrl-C, SIGTERM and SIGHUP end the program at once, with 128 and the signal's number as its
// status (130 for Ctrl-C). A signal that was ignored when the program started stays ignored.
void endOnStopSignals();

// From now on these signals are only noted. `first` answers the first one on standard error, `again` every
// later one; both must live for ever.
void noteStopSignals(const char* first, const char* again);

// The exit status that belongs to the first signal that was noted; absent when there was none. Any thread.
std::optional<int> notedStop();

} // namespace loftmere
