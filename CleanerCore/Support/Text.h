#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace loftmere {

// Text is UTF-8. These are the few operations on it that the standard library lacks.

bool isValidUTF8(std::string_view bytes);

// Every invalid sequence replaced by U+FFFD; valid text comes back unchanged.
std::string repairedUTF8(std::string_view bytes);

// The same text in UTF-8, if the bytes are UTF-16 that begins with its byte-order mark; the mark is left out,
// and what is invalid becomes U+FFFD. Absent for other bytes and for more than 1 GiB.
std::optional<std::string> utf8FromUTF16(std::string_view bytes);

// Text from outside made safe to show on one line of a terminal or in a message: invalid UTF-8 repaired,
// every control, line-breaking and direction-changing character replaced by a visible stand-in.
std::string printable(std::string_view text);

// The text of a JSON document made safe to show on a terminal: what `printable` would replace in its strings
// is written as an escape instead, so that the document stays the same. Its line breaks stay.
std::string printableJson(std::string_view document);

// The number of characters as a reader counts them: a letter with its accents is one, whatever it is made of.
size_t characterCount(std::string_view text);

// The pieces between separators, without the empty ones.
std::vector<std::string> splitOmittingEmpty(std::string_view text, char separator);

std::string joined(const std::vector<std::string>& pieces, std::string_view separator);

// ASCII letters lower-cased, all else as it is; for file name extensions and raw values.
std::string asciiLowercased(std::string_view text);

} // namespace loftmere
