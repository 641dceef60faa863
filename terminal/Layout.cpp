#include "terminal/Layout.h"

#include "CleanerCore/Support/DisplayWidth.h"

#include <algorithm>

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

} // namespace loftmere
