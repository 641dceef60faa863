#include "terminal/Layout.h"

#include "CleanerCore/Support/ByteCount.h"
#include "CleanerCore/Support/Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

namespace loftmere {

namespace {

constexpr int gap = 2;
constexpr int margin = 3; // of what is below another line, and the least for what leads a row
constexpr int sizeWidth = 9;
constexpr int barWidth = 24;
constexpr int labelWidth = 8;
constexpr int widestHeading = 100;
constexpr int unlimitedWhat = 48;     // without a terminal, what is longer pushes its note aside
constexpr int narrowestForWhat = 24;  // with less room than this, it goes on a line of its own
constexpr int narrowestForNotes = 40; // with less room than this, notes go below
constexpr size_t shownRows = 15;

std::string blanks(int count) {
    return std::string(static_cast<size_t>(std::max(0, count)), ' ');
}

// How the rows of one list share the width.
struct Columns {
    int lead = margin;
    int size = 0; // 0: no row has a size
    int tag = 0;  // 0: no row has a tag
    int what = 0;
    int note = 0;           // 0: as long as it is
    bool whatBelow = false; // on a line of its own
    bool noteBelow = false;
    bool isWhole = false; // nothing is shortened

    int indent() const { return lead + size + gap + (tag > 0 ? tag + gap : 0); }
};

std::string whole(const Row& row) {
    return row.title + (row.title.empty() || row.path.empty() ? "" : blanks(gap)) + row.path;
}

std::string shortened(const Row& row, int columns, std::string_view ellipsis) {
    if (displayWidth(whole(row)) <= columns) return whole(row);
    if (row.path.empty()) return cutEnd(row.title, columns, ellipsis);
    if (row.title.empty()) return shortPath(row.path, columns, ellipsis);
    const std::string title = cutEnd(row.title, (columns - gap) / 2, ellipsis);
    return title + blanks(gap) + shortPath(row.path, columns - gap - displayWidth(title), ellipsis);
}

Columns columnsFor(const Console& console, std::span<const Row> rows, bool isWhole) {
    Columns columns{.isWhole = isWhole || console.width() == 0};
    int longestNote = 0;
    for (const Row& row : rows) {
        columns.lead = std::max(columns.lead, displayWidth(row.lead));
        if (row.size) columns.size = sizeWidth;
        columns.tag = std::max(columns.tag, displayWidth(row.tag));
        columns.what = std::max(columns.what, displayWidth(whole(row)));
        longestNote = std::max(longestNote, displayWidth(row.note));
    }
    if (console.width() == 0) {
        columns.what = longestNote > 0 ? std::min(columns.what, unlimitedWhat) : 0;
        return columns;
    }
    int room = console.width() - columns.indent();
    columns.whatBelow = room < narrowestForWhat;
    if (columns.whatBelow) room = console.width() - margin;
    const int besides = room - columns.what - gap;
    columns.noteBelow = columns.whatBelow || besides < std::min(longestNote, narrowestForNotes);
    columns.note = columns.noteBelow ? room : besides;
    columns.what = std::min(columns.what, room);
    return columns;
}

// What leads a row, its size and its tag, each in its column.
std::string prefixOf(const Console& console, const Row& row, const Columns& columns) {
    std::string line = console.paint(row.leadInk, row.lead) + blanks(columns.lead - displayWidth(row.lead));
    line += padLeft(row.size ? ByteFormat::string(*row.size) : "", columns.size) + blanks(gap);
    if (columns.tag > 0)
        line += console.paint(row.tagInk, row.tag) + blanks(columns.tag - displayWidth(row.tag) + gap);
    return line;
}

// The same on a screen too narrow for columns: as much on a line as fits.
void printPieces(Console& console, const Row& row, const Columns& columns) {
    std::string_view tag = row.tag;
    while (tag.ends_with(' ')) tag.remove_suffix(1);
    const bool hasTick = columns.lead <= margin;
    std::string line =
        hasTick ? console.paint(row.leadInk, row.lead) + blanks(margin - displayWidth(row.lead)) : "";
    int used = hasTick ? margin : 0;
    bool isFirst = true;
    const auto add = [&](Ink ink, std::string_view text) {
        if (text.empty()) return;
        const int before = isFirst ? 0 : gap;
        isFirst = false;
        const bool fits = used + before + displayWidth(text) <= console.width();
        if (!fits) console.printLine(line);
        line = fits ? line + blanks(before) : blanks(margin);
        used = (fits ? used + before : margin) + displayWidth(text);
        line += console.paint(ink, text);
    };
    if (!hasTick) add(row.leadInk, row.lead);
    add(Ink::plain, row.size ? ByteFormat::string(*row.size) : "");
    add(row.tagInk, tag);
    if (!isFirst) console.printLine(line);
}

// What it is and where, as the lines of its column. What must be whole may be longer than the line: broken by
// us it could not be copied.
std::vector<std::string> linesOf(const Console& console, const Row& row, const Columns& columns) {
    if (console.width() == 0 || displayWidth(whole(row)) <= columns.what) return {whole(row)};
    const std::string_view ellipsis = console.glyphs().ellipsis;
    const bool isPair = !row.title.empty() && !row.path.empty();
    if (columns.isWhole) return isPair ? std::vector{row.title, row.path} : std::vector{whole(row)};
    if (!isPair || !columns.whatBelow) return {shortened(row, columns.what, ellipsis)};
    return {cutEnd(row.title, columns.what, ellipsis), shortPath(row.path, columns.what, ellipsis)};
}

// `before` leads the first line; the others begin at `indent`, and so does the first if nothing leads it.
void printNote(Console& console, std::string before, const std::string& note, int columns, int indent) {
    const auto lines = columns > 0 ? wrapped(note, columns) : std::vector{note};
    if (before.empty()) before = blanks(indent);
    for (const std::string& line : lines) {
        console.printLine(before + console.paint(Ink::dim, line));
        before = blanks(indent);
    }
}

void printRow(Console& console, const Row& row, const Columns& columns) {
    const int indent = columns.whatBelow ? margin : columns.indent();
    std::string line = blanks(indent);
    if (columns.whatBelow)
        printPieces(console, row, columns);
    else
        line = prefixOf(console, row, columns);

    const std::vector<std::string> what = linesOf(console, row, columns);
    for (size_t i = 0; i + 1 < what.size(); ++i) {
        console.printLine(line + what[i]);
        line = blanks(indent);
    }
    line += what.back();
    if (row.note.empty()) return console.printLine(line);

    if (columns.noteBelow) {
        console.printLine(line);
        return printNote(console, "", row.note, columns.note, indent);
    }
    line += blanks(std::max(columns.what - displayWidth(what.back()), 0) + gap);
    printNote(console, line, row.note, columns.note, indent + columns.what + gap);
}

void print(Console& console, std::span<const Row> rows, bool isWhole) {
    const Columns columns = columnsFor(console, rows, isWhole);
    for (const Row& row : rows) printRow(console, row, columns);
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

std::string shortPath(std::string_view path, int columns, std::string_view ellipsis) {
    if (displayWidth(path) <= columns) return std::string(path);
    // The first two folders stay, else the first.
    const size_t first = path.find('/', 1);
    const size_t second = first == std::string_view::npos ? first : path.find('/', first + 1);
    for (const size_t end : {second, first}) {
        if (end == std::string_view::npos) continue;
        const std::string head = std::string(path.substr(0, end + 1)) + std::string(ellipsis);
        for (size_t at = path.find('/', end + 1); at != std::string_view::npos; at = path.find('/', at + 1)) {
            if (displayWidth(head) + displayWidth(path.substr(at)) <= columns)
                return head + std::string(path.substr(at));
        }
    }
    const int room = columns - displayWidth(ellipsis);
    if (room < 0) return std::string(suffixOfWidth(path, columns));
    return std::string(ellipsis) + std::string(suffixOfWidth(path, room));
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

std::string counted(size_t count, std::string_view noun) {
    return fmt::format("{} {}{}", count, noun, count == 1 ? "" : "s");
}

void Extent::add(int64_t itemBytes) {
    ++count;
    addBytes(bytes, itemBytes);
}

std::string Extent::text() const {
    return fmt::format("{}, {}", counted(count, "item"), ByteFormat::string(bytes));
}

std::string shownSpace(const VolumeSpace& space) {
    return fmt::format("{} free of {}", ByteFormat::string(space.free), ByteFormat::string(space.total));
}

std::string shownMessage(std::string_view message) {
    const size_t end = message.find_last_not_of(" \r\n");
    std::string line(message.substr(0, end == std::string_view::npos ? 0 : end + 1));
    std::ranges::replace(line, '\n', ' ');
    return printable(line);
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

std::string bar(const Console& console, double share) {
    const int done = static_cast<int>(std::clamp(share, 0.0, 1.0) * barWidth);
    std::string text;
    for (int i = 0; i < barWidth; ++i) text += i < done ? console.glyphs().barDone : console.glyphs().barLeft;
    return text;
}

void printRows(Console& console, std::span<const Row> rows) {
    print(console, rows, false);
}

void printRows(Console& console, std::span<const Row> rows, bool verbose) {
    const bool isCut = !verbose && console.width() > 0 && rows.size() > shownRows;
    const auto shown = isCut ? rows.first(shownRows) : rows;
    print(console, shown, verbose);
    if (!isCut) return;
    Extent rest;
    for (const Row& row : rows.subspan(shownRows)) rest.add(row.size.value_or(0));
    const std::string more =
        fmt::format("+ {} more, {} (--verbose lists them)", rest.count, ByteFormat::string(rest.bytes));
    printParagraph(console, Ink::dim, more, margin);
}

void printHeading(Console& console, std::string_view title, const std::optional<Extent>& extent) {
    const int width = console.width() == 0 ? 80 : std::min(console.width(), widestHeading);
    std::string right;
    if (extent)
        right = fmt::format("{}  {:>9}", counted(extent->count, "item"), ByteFormat::string(extent->bytes));
    if (displayWidth(title) + gap + displayWidth(right) <= width) {
        const std::string counts = extent ? padLeft(right, width - displayWidth(title)) : "";
        return console.printLine(console.paint(Ink::bold, title) + counts);
    }
    printParagraph(console, Ink::bold, title, 0);
    if (extent) printParagraph(console, Ink::plain, extent->text(), margin);
}

void printParagraph(Console& console, Ink ink, std::string_view text, int indent) {
    const int width = console.width() == 0 ? displayWidth(text) : console.width() - indent;
    for (const std::string& line : wrapped(text, width))
        console.printLine(blanks(indent) + console.paint(ink, line));
}

void printFact(Console& console, std::string_view label, std::string_view text) {
    const int width = console.width() == 0 ? displayWidth(text) : console.width() - labelWidth;
    std::string lead = console.paint(Ink::bold, padded(label, labelWidth));
    for (const std::string& line : wrapped(text, width)) {
        console.printLine(lead + line);
        lead = blanks(labelWidth);
    }
}

} // namespace loftmere
