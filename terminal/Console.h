#pragma once

#include <string>
#include <string_view>

namespace loftmere {

// How a piece of text is drawn where colour is wanted.
enum class Ink { plain, bold, dim, green, yellow, red };

// Standard output, and standard error.
enum class Output { data, person };

// The signs that the output is made of; plain ASCII where the locale is not UTF-8.
struct Glyphs {
    const char* tick;
    const char* ellipsis;
    const char* dot;
    const char* barDone;
    const char* barLeft;
    const char* spinner[4];
};

// Where the program writes to: data goes to standard output, all else to standard error.
class Console {
public:
    // Looks at the terminal, NO_COLOR, TERM, COLUMNS and the locale.
    Console();
    Console(const Console&) = delete;
    Console& operator=(const Console&) = delete;

    // The columns of the terminal that is printed to; 0 when it is none, so that nothing is cut there.
    int width() const { return width_; }
    const Glyphs& glyphs() const { return *glyphs_; }

    // A person is there to look at live output, and to answer a question.
    bool isLive() const { return live_; }
    bool canAsk() const { return canAsk_; }

    // `text` drawn in the ink, or as it is where colour is not wanted.
    std::string paint(Ink ink, std::string_view text) const;

    // The text as the terminal behind standard error can show it: where its locale is not UTF-8, whatever is
    // not ASCII becomes "?", since its bytes might be control characters there.
    std::string forError(std::string_view text) const;

    // Where `print` adds to from now on; standard output at first.
    void printTo(Output output);

    // Adds to what is printed; for a terminal as `forError`. A reader that has gone away is no failure; the
    // rest is dropped.
    void print(std::string_view text);
    void printLine(std::string_view text = {});

    // Sends what was printed so far. False when data could not be written.
    bool flush();

    // One line on standard error, after the program's name.
    void say(std::string_view message);

    // Puts a question to a person and reads one line as the answer; empty at the end of input.
    std::string ask(std::string_view question);

private:
    Output output_ = Output::data;
    int width_ = 0;
    bool colour_ = false;
    bool asciiOut_ = false;
    bool asciiError_ = false;
    bool live_ = false;
    bool canAsk_ = false;
    const Glyphs* glyphs_;
    std::string pending_;
    bool readerGone_ = false;
    bool failed_ = false;
};

// Writes all of it to a descriptor. 0, or the errno value of what went wrong.
int writeAll(int descriptor, std::string_view text);

} // namespace loftmere
