#pragma once

#include <compare>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Text is UTF-8 in a std::string. These are the operations on it that the standard library lacks.
namespace loftmere {

bool isValidUTF8(std::string_view bytes);

// Every invalid sequence replaced by U+FFFD. Valid text comes back unchanged.
std::string repairedUTF8(std::string_view bytes);

// The same text in UTF-8 if the bytes are UTF-16 that begins with a byte-order mark. The mark is left out and
// invalid units become U+FFFD. Absent for other bytes and for more than 1 GiB.
std::optional<std::string> utf8FromUTF16(std::string_view bytes);

// Text from outside made safe to show on one line of a terminal or in a message: invalid UTF-8 is repaired,
// and each control, line-breaking or direction-changing character becomes a visible stand-in.
std::string printable(std::string_view text);

// The text of a JSON document made safe to show on a terminal. Line breaks stay. Whatever else `printable`
// would replace becomes an escape sequence, so the document means the same.
std::string printableJson(std::string_view document);

// The number of characters that a reader counts: a letter with its accents is one, whatever it is made of.
size_t characterCount(std::string_view text);

// The longest beginning of at most `count` characters, or of at most `size` bytes. Neither cuts a character's
// bytes apart, and accents that are characters of their own count as such.
std::string_view firstCharacters(std::string_view text, size_t count);
std::string_view wholeCharacters(std::string_view text, size_t size);

// The columns that printable text takes on a terminal: two for a wide character (Chinese, Japanese, Korean,
// emoji), none for a combining mark, one for the rest. Characters that a terminal joins into one count in
// full, so the answer is never too small.
int displayWidth(std::string_view text);

// The longest beginning, and the longest end, that take at most `columns`.
std::string_view prefixOfWidth(std::string_view text, int columns);
std::string_view suffixOfWidth(std::string_view text, int columns);

// One spelling for all that Unicode calls canonically equivalent: two texts are equivalent when their
// composed forms are equal. Text that is not valid UTF-8 comes back unchanged.
std::string composedText(std::string_view text);

// The composed form without the difference between upper and lower case and without the characters that some
// volumes ignore. Two names that a volume may take for the same one have equal caseless forms.
std::string caselessText(std::string_view text);

bool isASCII(std::string_view text);

// Compares runs of decimal digits by value and everything else byte by byte, so that "9.3" is less than
// "17.2". Leading zeros do not count: "017" and "17" are equal.
std::weak_ordering compareNumerically(std::string_view a, std::string_view b);

// The pieces between separators, without the empty ones.
std::vector<std::string> splitOmittingEmpty(std::string_view text, char separator);

std::string joined(const std::vector<std::string>& pieces, std::string_view separator);

// ASCII letters in lower case, everything else as it is. For file name extensions and raw values.
std::string asciiLowercased(std::string_view text);

// One word of a shell command line, whatever it holds, in single quotes.
std::string shellQuoted(std::string_view word);

// A string of AppleScript, in double quotes.
std::string appleScriptQuoted(std::string_view text);

} // namespace loftmere
