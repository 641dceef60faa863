#include "CleanerCore/Support/TextOrder.h"

#include "CleanerCore/Support/Text.h"

#include <unicode/bytestream.h>
#include <unicode/casemap.h>
#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include <algorithm>

namespace loftmere {

namespace {

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

} // namespace loftmere
