#pragma once

#include "CleanerCore/Records/ScanItem.h"
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

// The text if it fits, else its beginning, or its end, with the ellipsis where it was cut.
std::string cutEnd(std::string_view text, int columns, std::string_view ellipsis);
std::string cutStart(std::string_view text, int columns, std::string_view ellipsis);

// The text as lines of at most that width, broken at blanks where there are any. At least one line.
std::vector<std::string> wrapped(std::string_view text, int columns);

// "1 item", "2 items".
std::string counted(size_t count, std::string_view noun);

// "2026-03-01 09:30" in the machine's time zone.
std::string shownDate(Date date);

// How a risk is shown in a row: its label, as wide as the widest of them, in green, yellow or red.
std::string riskTag(Risk risk);
Ink inkOf(Risk risk);

// A bar that is filled by a share from 0 to 1.
std::string bar(const Console& console, double share);

// One line of a list: what leads it (a tick, a date), a size, a short tag, what it is and a note that
// explains it.
struct Row {
    std::string lead = {};
    Ink leadInk = Ink::plain;
    std::optional<int64_t> size = std::nullopt;
    std::string tag = {};
    Ink tagInk = Ink::plain;
    std::string title;
    bool titleIsPath = false; // where it must be cut, the end says more than the beginning
    std::string note = {};
};

// How many rows of one list a terminal sees unless it asks for all.
inline constexpr size_t shownRows = 15;

// Prints the rows in columns that fit the terminal; a note takes as many lines of its column as it needs.
// Where there is no terminal, nothing is cut or broken.
void printRows(Console& console, std::span<const Row> rows);

// The same, but a terminal gets no more than `shownRows` unless `full`; the rest is counted and summed up.
void printRows(Console& console, std::span<const Row> rows, bool full);

// A line with text on the left and right, bold.
void printHeading(Console& console, std::string_view left, std::string_view right);

// Text broken into lines that fit the terminal, each behind `indent` blanks.
void printParagraph(Console& console, Ink ink, std::string_view text, int indent);

} // namespace loftmere
