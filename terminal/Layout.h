#pragma once

#include "CleanerCore/Records/ScanItem.h"
#include "CleanerCore/Support/ByteCount.h"
#include "CleanerCore/Support/Date.h"
#include "terminal/Console.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// Text in columns and lists in rows. All text must be printable; widths are columns of the terminal.
namespace loftmere {

// Blanks added on the right, or on the left, up to the width.
std::string padded(std::string_view text, int columns);
std::string padLeft(std::string_view text, int columns);

// The text if it fits, else its beginning with the ellipsis.
std::string cutEnd(std::string_view text, int columns, std::string_view ellipsis);

// The path if it fits. Else the ellipsis takes the place of folders in its middle, so that where it begins
// and what it names are still seen; where even that is too long, of its beginning.
std::string shortPath(std::string_view path, int columns, std::string_view ellipsis);

// The text as lines of at most that width, broken at blanks where there are any. At least one line.
std::vector<std::string> wrapped(std::string_view text, int columns);

// "1 item", "2 items".
std::string counted(size_t count, std::string_view noun);

// How many items, and their bytes.
struct Extent {
    size_t count = 0;
    int64_t bytes = 0;

    void add(int64_t itemBytes);
    std::string text() const; // "2 items, 5 MB"
};

// "79.62 GB free of 270.55 GB".
std::string shownSpace(const VolumeSpace& space);

// What a tool or the system said, on one line: a line feed at its end is dropped, one within it is a blank.
std::string shownMessage(std::string_view message);

// "2026-03-01 09:30" in the machine's time zone.
inline std::string shownDate(Date date) {
    return DateText::local(date, "%Y-%m-%d %H:%M");
}

// How a risk is shown in a row: its label, as wide as the widest of them, in green, yellow or red.
std::string riskTag(Risk risk);
Ink inkOf(Risk risk);

// A bar that is filled by a share from 0 to 1.
std::string bar(const Console& console, double share);

// One line of a list: what leads it (a tick, a date), a size, a short tag, what it is, where it is, and a
// note that explains it.
struct Row {
    std::string lead = {};
    Ink leadInk = Ink::plain;
    std::optional<int64_t> size = std::nullopt;
    std::string tag = {};
    Ink tagInk = Ink::plain;
    std::string title = {};
    std::string path = {};
    std::string note = {};
};

// Prints the rows in columns that fit the terminal. What is too long is shortened, but notes take as many
// lines as they need. Without a terminal each row is one line and nothing is shortened.
void printRows(Console& console, std::span<const Row> rows);

// The same for a list that may be long. Unless `verbose`, a terminal gets the first 15 rows, and the rest is
// counted; with it all rows, and nothing shortened.
void printRows(Console& console, std::span<const Row> rows, bool verbose);

// A bold title, and at the right, or below where it does not fit, how much follows.
void printHeading(Console& console, std::string_view title, const std::optional<Extent>& extent);

// Text broken into lines that fit the terminal, each behind `indent` blanks.
void printParagraph(Console& console, Ink ink, std::string_view text, int indent);

// A bold label and what it says, in a column of their own each.
void printFact(Console& console, std::string_view label, std::string_view text);

} // namespace loftmere
