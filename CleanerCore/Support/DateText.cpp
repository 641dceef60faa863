#include "CleanerCore/Support/DateText.h"

#include <unicode/datefmt.h>
#include <unicode/locid.h>
#include <unicode/unistr.h>

#include <memory>

namespace loftmere::DateText {

std::string medium(Date date, const std::string& locale) {
    const std::unique_ptr<icu::DateFormat> format(
        icu::DateFormat::createDateInstance(icu::DateFormat::kMedium, icu::Locale(locale.c_str())));
    if (!format) return toISO8601(date).substr(0, 10); // ICU found none of its data
    using Milliseconds = std::chrono::duration<double, std::milli>;
    icu::UnicodeString text;
    format->format(std::chrono::duration_cast<Milliseconds>(date.time_since_epoch()).count(), text);
    std::string utf8;
    return text.toUTF8String(utf8);
}

} // namespace loftmere::DateText
