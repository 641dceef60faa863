#include "terminal/Rows.h"

#include "CleanerCore/Support/ByteFormat.h"
#include "CleanerCore/Support/DisplayWidth.h"
#include "terminal/Layout.h"

#include <fmt/format.h>

#include <algorithm>

namespace loftmere {

namespace {

constexpr int tickWidth = 3;
constexpr int sizeWidth = 9;
constexpr int gap = 2;
constexpr int unlimitedTitle = 48;    // where no terminal sets a limit, longer titles push their note aside
constexpr int narrowestForNotes = 40; // with less room than this, notes go below their title

struct Columns {
    int tag = 0;
    int title = 0; // 0: as long as it is
    int note = 0;  // 0: as long as it is
    bool noteBelow = false;

    int indent() const { return tickWidth + sizeWidth + gap + (tag > 0 ? tag + gap : 0); }
};

Columns columnsFor(const Console& console, std::span<const Row> rows) {
    Columns columns;
    int longestTitle = 0;
    bool notes = false;
    for (const Row& row : rows) {
        columns.tag = std::max(columns.tag, displayWidth(row.tag));
        longestTitle = std::max(longestTitle, displayWidth(row.title));
        notes = notes || !row.note.empty();
    }
    if (console.width() == 0) {
        columns.title = notes ? std::min(longestTitle, unlimitedTitle) : 0;
        return columns;
    }
    const int room = std::max(console.width() - columns.indent(), 12);
    columns.title = room;
    columns.note = room;
    columns.noteBelow = room < narrowestForNotes;
    if (notes && !columns.noteBelow) {
        columns.title = std::min(longestTitle, room * 9 / 20);
        columns.note = room - columns.title - gap;
    }
    return columns;
}

std::string titleOf(const Console& console, const Row& row, const Columns& columns) {
    if (console.width() == 0) return row.title;
    const auto cut = row.titleIsPath ? cutStart : cutEnd;
    return cut(row.title, columns.title, console.glyphs().ellipsis);
}

void printRow(Console& console, const Row& row, const Columns& columns) {
    std::string line =
        row.ticked ? console.paint(Ink::green, fmt::format(" {} ", console.glyphs().tick)) : "   ";
    line += padLeft(ByteFormat::string(row.size), sizeWidth) + "  ";
    if (columns.tag > 0)
        line += console.paint(row.tagInk, row.tag) + padded("", columns.tag - displayWidth(row.tag) + gap);
    const std::string title = titleOf(console, row, columns);
    line += title;
    if (row.note.empty()) return console.printLine(line);

    std::vector<std::string> notes{row.note};
    if (columns.note > 0) notes = wrapped(row.note, columns.note);
    const int indent = columns.indent() + (columns.noteBelow ? 0 : columns.title + gap);
    if (columns.noteBelow) {
        console.printLine(line);
    } else {
        line += padded("", columns.title - displayWidth(title) + gap);
        console.printLine(line + console.paint(Ink::dim, notes.front()));
        notes.erase(notes.begin());
    }
    for (const std::string& rest : notes)
        console.printLine(padded("", indent) + console.paint(Ink::dim, rest));
}

} // namespace

void printRows(Console& console, std::span<const Row> rows) {
    const Columns columns = columnsFor(console, rows);
    for (const Row& row : rows) printRow(console, row, columns);
}

void printHeading(Console& console, std::string_view left, std::string_view right) {
    const int width = console.width() == 0 ? 80 : std::min(console.width(), 100);
    const int room = std::max(width - displayWidth(right) - gap, 8);
    const std::string shown = cutEnd(left, room, console.glyphs().ellipsis);
    console.printLine(console.paint(Ink::bold, shown) + padLeft(right, width - displayWidth(shown)));
}

void printParagraph(Console& console, Ink ink, std::string_view text, int indent) {
    const int width = console.width() == 0 ? displayWidth(text) : console.width() - indent;
    for (const std::string& line : wrapped(text, width))
        console.printLine(padded("", indent) + console.paint(ink, line));
}

std::string counted(size_t count, std::string_view noun) {
    return fmt::format("{} {}{}", count, noun, count == 1 ? "" : "s");
}

} // namespace loftmere
