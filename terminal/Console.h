#pragma once

#include "CleanerCore/Support/Json.h"

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

// Where the program writes: data to standard output, everything else to standard error.
class Console {
public:
    // Looks at the terminal, NO_COLOR, TERM, COLUMNS and the locale.
    Console();
    Console(const Console&) = delete;
    Console& operator=(const Console&) = delete;

    // The columns of the terminal that is printed to; 0 when it is none, and then nothing is cut.
    int width() const { return width_; }
    const Glyphs& glyphs() const { return *glyphs_; }

    // Whether a person is there to look at live output, and to answer a question.
    bool isLive() const { return live_; }
    bool canAsk() const { return canAsk_; }

    // Whether a person sees what is printed there.
    static bool isScreen(Output output);

    // `text` drawn in the ink, or as it is where colour is not wanted.
    std::string paint(Ink ink, std::string_view text) const;

    // The text as the terminal behind standard error can show it: where its locale is not UTF-8, whatever is
    // not ASCII becomes "?", since its bytes might be control characters there.
    std::string forError(std::string_view text) const;

    // Where `print` adds to from now on; standard output at first.
    void printTo(Output output);

    // Adds to what is printed; for a terminal as `forError`. When the reader has gone away, the rest is
    // dropped, which is no failure.
    void print(std::string_view text);
    void printLine(std::string_view text = {});

    // Sends what was printed so far. False when data could not be written.
    bool flush();

    // One line on standard error, after the program's name.
    void say(std::string_view message);

    // Draws one line for a person while `work` runs, and answers what it answers.
    template <class Work> auto working(const std::string& text, Work work) const;

    // Asks a person and reads one line as the answer; empty at the end of input.
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

// One line on the terminal behind standard error that is drawn again and again while the program works, and
// erased in the end. Draws nothing where nobody is looking.
class StatusLine {
public:
    explicit StatusLine(const Console& console) : console_(console) {}
    ~StatusLine();
    StatusLine(const StatusLine&) = delete;
    StatusLine& operator=(const StatusLine&) = delete;

    // Replaces what the line shows; cut where the terminal ends.
    void draw(const std::string& text) const;

private:
    const Console& console_;
};

template <class Work> auto Console::working(const std::string& text, Work work) const {
    const StatusLine line(*this);
    line.draw(text);
    return work();
}

// A JSON document that is printed while it is made, so that only one of its values is held at a time. It
// reads like a document that was printed whole: indented by two, and with nothing in it that could control a
// terminal. Text that is not valid UTF-8 is repaired. `key` is empty for elements of an array and for the
// outermost value; otherwise it is printed as it is.
class JsonOutput {
public:
    explicit JsonOutput(Console& console) : console_(console) {}

    void beginObject(std::string_view key = {}) { begin(key, '{'); }
    void beginArray(std::string_view key = {}) { begin(key, '['); }

    // A whole value, of any size.
    void value(const Json& value, std::string_view key = {});

    // Ends the innermost object or array that is still open; ends the line after the outermost one.
    void end();

private:
    void begin(std::string_view key, char bracket);
    void startValue(std::string_view key);
    std::string newLine() const;

    Console& console_;
    std::string open_;    // the brackets that are still open
    bool isEmpty_ = true; // the innermost one holds nothing yet
};

} // namespace loftmere
