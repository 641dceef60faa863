#include "CleanerCore/Support/Text.h"

#include <fmt/format.h>
#include <unicode/bytestream.h>
#include <unicode/casemap.h>
#include <unicode/normalizer2.h>
#include <unicode/ubrk.h>
#include <unicode/uchar.h>
#include <unicode/ucnv.h>
#include <unicode/unistr.h>
#include <unicode/utext.h>
#include <unicode/utf16.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <memory>

namespace loftmere {

namespace {

constexpr std::string_view replacement = "\xEF\xBF\xBD";

// Whether showing the character could move the cursor, start an escape sequence or reorder the line.
bool isDangerous(UChar32 c) {
    switch (u_charType(c)) {
    case U_CONTROL_CHAR:
    case U_LINE_SEPARATOR:
    case U_PARAGRAPH_SEPARATOR: return true;
    case U_FORMAT_CHAR: return c != 0x200D; // the zero width joiner only glues letters and emoji
    default: return false;
    }
}

struct Character {
    UChar32 code; // negative for an invalid sequence
    std::string_view bytes;
};

// The first character of a text that is not empty.
Character firstCharacter(std::string_view text) {
    // ICU's macros count in 32 bits, so they see a window that is longer than any character.
    const auto window = static_cast<int32_t>(std::min<size_t>(text.size(), 8));
    int32_t length = 0;
    UChar32 code = 0;
    U8_NEXT(reinterpret_cast<const uint8_t*>(text.data()), length, window, code);
    return {code, text.substr(0, static_cast<size_t>(length))};
}

template <class Visit> void forEachCharacter(std::string_view text, Visit visit) {
    while (!text.empty()) {
        const Character next = firstCharacter(text);
        visit(next.code, next.bytes);
        text.remove_prefix(next.bytes.size());
    }
}

// The visible stand-in of a control character: U+2400 to U+2421 for ASCII, U+FFFD for the rest.
std::string visibleStandIn(UChar32 c) {
    if (c < 0x20) return {'\xE2', '\x90', static_cast<char>(0x80 + c)};
    if (c == 0x7F) return "\xE2\x90\xA1";
    return std::string(replacement);
}

bool startsCharacter(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) != 0x80;
}

int widthOf(UChar32 c) {
    if (c >= 0x20 && c < 0x7F) return 1;
    const auto category = u_charType(c);
    if (category == U_NON_SPACING_MARK || category == U_ENCLOSING_MARK || c == 0x200D) return 0;
    const auto width = u_getIntPropertyValue(c, UCHAR_EAST_ASIAN_WIDTH);
    return width == U_EA_WIDE || width == U_EA_FULLWIDTH ? 2 : 1;
}

std::string normalized(const icu::Normalizer2* form, std::string_view text, UErrorCode& error) {
    std::string result;
    icu::StringByteSink<std::string> sink(&result);
    if (U_SUCCESS(error)) {
        form->normalizeUTF8(0, {text.data(), static_cast<int32_t>(text.size())}, sink, nullptr, error);
    }
    return result;
}

std::string folded(std::string_view text, UErrorCode& error) {
    std::string result;
    icu::StringByteSink<std::string> sink(&result);
    icu::CaseMap::utf8Fold(0, {text.data(), static_cast<int32_t>(text.size())}, sink, nullptr, error);
    return result;
}

std::string withoutIgnorable(std::string_view text) {
    icu::UnicodeString kept;
    const auto all = icu::UnicodeString::fromUTF8({text.data(), static_cast<int32_t>(text.size())});
    for (int32_t at = 0; at < all.length(); at = all.moveIndex32(at, 1)) {
        const UChar32 c = all.char32At(at);
        if (!u_hasBinaryProperty(c, UCHAR_DEFAULT_IGNORABLE_CODE_POINT)) kept.append(c);
    }
    std::string result;
    return kept.toUTF8String(result);
}

// ICU counts in 32 bits.
bool isForICU(std::string_view text) {
    return text.size() < (size_t{1} << 28) && isValidUTF8(text);
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

// Removes the digits at the front of the text and returns them without leading zeros.
std::string_view takeNumber(std::string_view& text) {
    const auto end = std::ranges::find_if_not(text, isDigit);
    std::string_view digits = text.substr(0, static_cast<size_t>(end - text.begin()));
    text.remove_prefix(digits.size());
    digits.remove_prefix(std::min(digits.find_first_not_of('0'), digits.size()));
    return digits;
}

// Runs may be longer than any integer, so they are compared as text.
std::weak_ordering compareNumbers(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return a.size() <=> b.size();
    return a <=> b;
}

} // namespace

bool isValidUTF8(std::string_view bytes) {
    bool valid = true;
    forEachCharacter(bytes, [&](UChar32 c, std::string_view) { valid = valid && c >= 0; });
    return valid;
}

std::string repairedUTF8(std::string_view bytes) {
    std::string text;
    text.reserve(bytes.size());
    forEachCharacter(bytes, [&](UChar32 c, std::string_view raw) { text += c < 0 ? replacement : raw; });
    return text;
}

std::optional<std::string> utf8FromUTF16(std::string_view bytes) {
    constexpr size_t limit = size_t{1} << 30; // ICU counts in 32 bits
    if (!bytes.starts_with("\xFE\xFF") && !bytes.starts_with("\xFF\xFE")) return std::nullopt;
    if (bytes.size() > limit) return std::nullopt;
    std::string text(bytes.size() / 2 * 3, '\0'); // no unit takes more than three bytes
    UErrorCode error = U_ZERO_ERROR;
    const int32_t length = ucnv_convert("UTF-8", "UTF-16", text.data(), static_cast<int32_t>(text.size()),
                                        bytes.data(), static_cast<int32_t>(bytes.size()), &error);
    if (U_FAILURE(error)) return std::nullopt;
    text.resize(static_cast<size_t>(length));
    return text;
}

std::string printable(std::string_view text) {
    std::string shown;
    shown.reserve(text.size());
    forEachCharacter(text, [&](UChar32 c, std::string_view raw) {
        if (c < 0)
            shown += replacement;
        else if (isDangerous(c))
            shown += visibleStandIn(c);
        else
            shown += raw;
    });
    return shown;
}

std::string printableJson(std::string_view document) {
    std::string shown;
    shown.reserve(document.size());
    forEachCharacter(document, [&](UChar32 c, std::string_view raw) {
        // JSON has escaped all control characters below this, except the line breaks between values.
        if (c < 0x7F || !isDangerous(c))
            shown += raw;
        else if (c < 0x10000)
            shown += fmt::format("\\u{:04x}", unsigned(c));
        else
            shown += fmt::format("\\u{:04x}\\u{:04x}", unsigned{U16_LEAD(c)}, unsigned{U16_TRAIL(c)});
    });
    return shown;
}

size_t characterCount(std::string_view text) {
    const auto isAlone = [](unsigned char c) { return c < 0x80 && c != '\r'; };
    if (std::ranges::all_of(text, isAlone)) return text.size();
    UErrorCode error = U_ZERO_ERROR;
    const std::unique_ptr<UText, decltype(&utext_close)> source(
        utext_openUTF8(nullptr, text.data(), static_cast<int64_t>(text.size()), &error), utext_close);
    const std::unique_ptr<UBreakIterator, decltype(&ubrk_close)> breaks(
        ubrk_open(UBRK_CHARACTER, "", nullptr, 0, &error), ubrk_close);
    if (U_SUCCESS(error)) ubrk_setUText(breaks.get(), source.get(), &error);
    if (U_FAILURE(error)) return text.size();
    size_t count = 0;
    while (ubrk_next(breaks.get()) != UBRK_DONE) ++count;
    return count;
}

std::string_view firstCharacters(std::string_view text, size_t count) {
    size_t end = 0;
    for (; end < text.size(); ++end) {
        if (startsCharacter(text[end]) && count-- == 0) break;
    }
    return text.substr(0, end);
}

std::string_view wholeCharacters(std::string_view text, size_t size) {
    if (text.size() <= size) return text;
    while (size > 0 && !startsCharacter(text[size])) --size;
    return text.substr(0, size);
}

int displayWidth(std::string_view text) {
    int columns = 0;
    forEachCharacter(text, [&](UChar32 c, std::string_view) { columns += widthOf(c); });
    return columns;
}

std::string_view prefixOfWidth(std::string_view text, int columns) {
    size_t end = 0;
    while (end < text.size()) {
        const Character next = firstCharacter(text.substr(end));
        columns -= widthOf(next.code);
        if (columns < 0) break;
        end += next.bytes.size();
    }
    return text.substr(0, end);
}

std::string_view suffixOfWidth(std::string_view text, int columns) {
    int surplus = displayWidth(text) - columns;
    bool dropped = false;
    while (!text.empty()) {
        const Character next = firstCharacter(text);
        const int width = widthOf(next.code);
        // The marks of a dropped character are dropped with it.
        if (surplus <= 0 && !(dropped && width == 0)) break;
        surplus -= width;
        dropped = true;
        text.remove_prefix(next.bytes.size());
    }
    return text;
}

std::string composedText(std::string_view text) {
    if (isASCII(text) || !isForICU(text)) return std::string(text);
    UErrorCode error = U_ZERO_ERROR;
    std::string result = normalized(icu::Normalizer2::getNFCInstance(error), text, error);
    return U_SUCCESS(error) ? result : std::string(text);
}

std::string caselessText(std::string_view text) {
    if (isASCII(text)) return asciiLowercased(text);
    if (!isForICU(text)) return std::string(text);
    UErrorCode error = U_ZERO_ERROR;
    const std::string apart = normalized(icu::Normalizer2::getNFDInstance(error), text, error);
    const std::string plain = withoutIgnorable(folded(apart, error));
    std::string result = normalized(icu::Normalizer2::getNFCInstance(error), plain, error);
    return U_SUCCESS(error) ? result : std::string(text);
}

bool isASCII(std::string_view text) {
    return std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

std::weak_ordering compareNumerically(std::string_view a, std::string_view b) {
    while (!a.empty() && !b.empty()) {
        std::weak_ordering order = static_cast<unsigned char>(a[0]) <=> static_cast<unsigned char>(b[0]);
        if (isDigit(a[0]) && isDigit(b[0])) {
            order = compareNumbers(takeNumber(a), takeNumber(b));
        } else {
            a.remove_prefix(1);
            b.remove_prefix(1);
        }
        if (order != 0) return order;
    }
    return a.size() <=> b.size();
}

std::vector<std::string> splitOmittingEmpty(std::string_view text, char separator) {
    std::vector<std::string> pieces;
    while (!text.empty()) {
        const size_t end = std::min(text.find(separator), text.size());
        if (end > 0) pieces.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return pieces;
}

std::string joined(const std::vector<std::string>& pieces, std::string_view separator) {
    std::string text;
    for (size_t i = 0; i < pieces.size(); ++i) {
        if (i > 0) text += separator;
        text += pieces[i];
    }
    return text;
}

std::string asciiLowercased(std::string_view text) {
    std::string lower(text);
    for (char& c : lower) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + ('a' - 'A'));
    }
    return lower;
}

std::string shellQuoted(std::string_view word) {
    std::string quoted = "'";
    for (const char letter : word) {
        if (letter == '\'')
            quoted += R"('\'')";
        else
            quoted += letter;
    }
    return quoted + "'";
}

std::string appleScriptQuoted(std::string_view text) {
    std::string quoted = "\"";
    for (const char letter : text) {
        if (letter == '\\' || letter == '"') quoted += '\\';
        quoted += letter;
    }
    return quoted + "\"";
}

} // namespace loftmere
