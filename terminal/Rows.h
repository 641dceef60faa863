#pragma once

#include "terminal/Console.h"

#include <cstdint>
#include <span>
#include <string>

namespace loftmere {

// One line of a list: a tick, a size, a short tag, what it is and a note that explains it. All text must be
// printable.
struct Row {
    bool ticked = false;
    int64_t size = 0;
    std::string tag = {};
    Ink tagInk = Ink::plain;
    std::string title;
    bool titleIsPath = false; // where it must be cut, the end says more than the beginning
    std::string note = {};
};

// Prints the rows in columns that fit the terminal; a note takes as many lines of its column as it needs.
// Where there is no terminal, nothing is cut or broken.
void printRows(Console& console, std::span<const Row> rows);

// A line with text on the left and right, bold.
void printHeading(Console& console, std::string_view left, std::string_view right);

// Text broken into lines that fit the terminal, each behind `indent` blanks.
void printParagraph(Console& console, Ink ink, std::string_view text, int indent);

// "1 item", "2 items".
std::string counted(size_t count, std::string_view noun);

} // namespace loftmere
