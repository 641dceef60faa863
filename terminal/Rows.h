#pragma once

#include "CleanerCore/Records/ScanItem.h"
#include "CleanerCore/Support/Date.h"
#include "terminal/Console.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace loftmere {

// One line of a list: what leads it (a tick, a date), a size, a short tag, what it is and a note that
// explains it. All text must be printable.
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

// The same, where a terminal gets no more than `shownRows` unless `full`; the rest is counted and summed up.
void printRows(Console& console, std::span<const Row> rows, bool full);

// A line with text on the left and right, bold.
void printHeading(Console& console, std::string_view left, std::string_view right);

// Text broken into lines that fit the terminal, each behind `indent` blanks.
void printParagraph(Console& console, Ink ink, std::string_view text, int indent);

// How a risk stands in a row: its label, as wide as the widest of them, in green, yellow or red.
std::string riskTag(Risk risk);
Ink inkOf(Risk risk);

// "2026-03-01 09:30" in the machine's time zone.
std::string shownDate(Date date);

// "1 item", "2 items".
std::string counted(size_t count, std::string_view noun);

} // namespace loftmere
