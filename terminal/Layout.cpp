#include "terminal/Layout.h"

#include "CleanerCore/Support/ByteFormat.h"
#include "CleanerCore/Support/ByteSum.h"
#include "CleanerCore/Support/DisplayWidth.h"

#include <fmt/format.h>

#include <algorithm>
#include <ctime>

namespace loftmere {

namespace {

std::string blanks(int count) {
    return std::string(static_cast<size_t>(std::max(0, count)), ' ');
}

} // namespace

std::string padded(std::string_view text, int columns) {
    return std::string(text) + blanks(columns - displayWidth(text));
}

std::string padLeft(std::string_view text, int columns) {
    return blanks(columns - displayWidth(text)) + std::string(text);
}

std::string cutEnd(std::string_view text, int columns, std::string_view ellipsis) {
    if (displayWidth(text) <= columns) return std::string(text);
    const int room = columns - displayWidth(ellipsis);
    if (room < 0) return std::string(prefixOfWidth(text, columns));
    return std::string(prefixOfWidth(text, room)) + std::string(ellipsis);
}

std::string cutStart(std::string_view text, int columns, std::string_view ellipsis) {
    if (displayWidth(text) <= columns) return std::string(text);
    const int room = columns - displayWidth(ellipsis);
    if (room < 0) return std::string(suffixOfWidth(text, columns));
    return std::string(ellipsis) + std::string(suffixOfWidth(text, room));
}

std::vector<std::string> wrapped(std::string_view text, int columns) {
    std::vector<std::string> lines;
    while (displayWidth(text) > columns) {
        std::string_view line = prefixOfWidth(text, std::max(columns, 2));
        // A blank right behind the line is as good a place to break as one within it.
        const size_t blank = text.substr(0, line.size() + 1).rfind(' ');
        if (blank != std::string_view::npos && blank > 0) line = text.substr(0, blank);
        lines.emplace_back(line);
        text.remove_prefix(line.size());
        if (text.starts_with(' ')) text.remove_prefix(1);
    }
    if (!text.empty() || lines.empty()) lines.emplace_back(text);
    return lines;
}

namespace {

constexpr int barWidth = 24;
constexpr int margin = 3; // what leads a row, if it is no more than a tick
constexpr int sizeWidth = 9;
constexpr int gap = 2;
constexpr int unlimitedTitle = 48;    // where no terminal sets a limit, longer titles push their note aside
constexpr int narrowestForNotes = 40; // with less room than this, notes go below their title

struct Columns {
    int lead = margin;
    int tag = 0;
    int title = 0; // 0: as long as it is
    int note = 0;  // 0: as long as it is
    bool noteBelow = false;

    int indent() const { return lead + sizeWidth + gap + (tag > 0 ? tag + gap : 0); }
};

Columns columnsFor(const Console& console, std::span<const Row> rows) {
    Columns columns;
    int longestTitle = 0;
    bool notes = false;
    for (const Row& row : rows) {
        columns.lead = std::max(columns.lead, displayWidth(row.lead));
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
        console.paint(row.leadInk, row.lead) + padded("", columns.lead - displayWidth(row.lead));
    line += padLeft(row.size ? ByteFormat::string(*row.size) : "", sizeWidth) + padded("", gap);
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

void printRows(Console& console, std::span<const Row> rows, bool full) {
    const size_t shown = full || console.width() == 0 ? rows.size() : std::min(rows.size(), shownRows);
    printRows(console, rows.first(shown));
    if (shown == rows.size()) return;
    int64_t rest = 0;
    for (const Row& row : rows.subspan(shown)) addBytes(rest, row.size.value_or(0));
    const std::string more =
        fmt::format("+ {} more, {} (--full shows them)", rows.size() - shown, ByteFormat::string(rest));
    printParagraph(console, Ink::dim, more, margin);
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

std::string riskTag(Risk risk) {
    return padded(label(risk), displayWidth(label(Risk::caution)));
}

Ink inkOf(Risk risk) {
    switch (risk) {
    case Risk::safe: return Ink::green;
    case Risk::review: return Ink::yellow;
    case Risk::caution: return Ink::red;
    }
    return Ink::plain;
}

std::string shownDate(Date date) {
    const std::time_t seconds = std::chrono::system_clock::to_time_t(date);
    std::tm local{};
    if (::localtime_r(&seconds, &local) == nullptr) return toISO8601(date);
    char text[64];
    return {text, std::strftime(text, sizeof text, "%Y-%m-%d %H:%M", &local)};
}

std::string counted(size_t count, std::string_view noun) {
    return fmt::format("{} {}{}", count, noun, count == 1 ? "" : "s");
}

std::string bar(const Console& console, double share) {
    const int done = static_cast<int>(std::clamp(share, 0.0, 1.0) * barWidth);
    std::string text;
    for (int i = 0; i < barWidth; ++i) text += i < done ? console.glyphs().barDone : console.glyphs().barLeft;
    return text;
}

} // namespace loftmere
