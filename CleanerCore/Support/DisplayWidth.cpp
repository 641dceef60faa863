#include "CleanerCore/Support/DisplayWidth.h"

#include <unicode/uchar.h>
#include <unicode/utf8.h>

namespace loftmere {

namespace {

int widthOf(UChar32 c) {
    if (c >= 0x20 && c < 0x7F) return 1;
    const auto category = u_charType(c);
    if (category == U_NON_SPACING_MARK || category == U_ENCLOSING_MARK || c == 0x200D) return 0;
    const auto width = u_getIntPropertyValue(c, UCHAR_EAST_ASIAN_WIDTH);
    return width == U_EA_WIDE || width == U_EA_FULLWIDTH ? 2 : 1;
}

// The character at the text's beginning and its length in bytes.
UChar32 firstCharacter(std::string_view text, int32_t& length) {
    const auto window = static_cast<int32_t>(text.size() < 8 ? text.size() : 8);
    UChar32 c = 0;
    length = 0;
    U8_NEXT(reinterpret_cast<const uint8_t*>(text.data()), length, window, c);
    return c;
}

} // namespace

int displayWidth(std::string_view text) {
    int columns = 0;
    for (int32_t length = 0; !text.empty(); text.remove_prefix(static_cast<size_t>(length)))
        columns += widthOf(firstCharacter(text, length));
    return columns;
}

std::string_view prefixOfWidth(std::string_view text, int columns) {
    size_t end = 0;
    while (end < text.size()) {
        int32_t length = 0;
        columns -= widthOf(firstCharacter(text.substr(end), length));
        if (columns < 0) break;
        end += static_cast<size_t>(length);
    }
    return text.substr(0, end);
}

std::string_view suffixOfWidth(std::string_view text, int columns) {
    int surplus = displayWidth(text) - columns;
    bool dropped = false;
    while (!text.empty()) {
        int32_t length = 0;
        const int width = widthOf(firstCharacter(text, length));
        // Marks of a character that was dropped go with it.
        if (surplus <= 0 && !(dropped && width == 0)) break;
        surplus -= width;
        dropped = true;
        text.remove_prefix(static_cast<size_t>(length));
    }
    return text;
}

} // namespace loftmere
