#include "CleanerCore/Support/Date.h"

#include <fmt/format.h>
#include <unicode/datefmt.h>
#include <unicode/locid.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <array>
#include <memory>

namespace loftmere {

namespace {

using Duration = Date::duration;

// What a year of four digits can express.
constexpr std::chrono::sys_seconds earliest = std::chrono::sys_days(std::chrono::year(0) / 1 / 1);
constexpr std::chrono::sys_seconds latest =
    std::chrono::sys_days(std::chrono::year(10000) / 1 / 1) - std::chrono::seconds(1);

// Removes exactly `width` decimal digits from the front of the text.
std::optional<int> takeDigits(std::string_view& text, size_t width) {
    int value = 0;
    if (text.size() < width) return std::nullopt;
    for (const char c : text.substr(0, width)) {
        if (c < '0' || c > '9') return std::nullopt;
        value = value * 10 + (c - '0');
    }
    text.remove_prefix(width);
    return value;
}

bool take(std::string_view& text, char expected) {
    if (!text.starts_with(expected)) return false;
    text.remove_prefix(1);
    return true;
}

// The offset from UTC at the end of the text: "Z", "+hh:mm" or "+hhmm".
std::optional<std::chrono::minutes> takeZone(std::string_view text) {
    if (text == "Z") return std::chrono::minutes(0);
    const bool west = text.starts_with('-');
    if (!take(text, '+') && !take(text, '-')) return std::nullopt;
    const auto hours = takeDigits(text, 2);
    (void)take(text, ':');
    const auto minutes = takeDigits(text, 2);
    if (!hours || !minutes || *hours > 23 || *minutes > 59 || !text.empty()) return std::nullopt;
    const auto offset = std::chrono::hours(*hours) + std::chrono::minutes(*minutes);
    return west ? -offset : offset;
}

} // namespace

Date currentDate() {
    return std::chrono::system_clock::now();
}

Date addSeconds(Date date, double seconds) {
    using Seconds = std::chrono::duration<double>;
    const double sum = std::chrono::duration_cast<Seconds>(date.time_since_epoch()).count() + seconds;
    if (sum >= std::chrono::duration_cast<Seconds>(Duration::max()).count()) return distantFuture;
    if (sum <= std::chrono::duration_cast<Seconds>(Duration::min()).count()) return distantPast;
    return date + std::chrono::duration_cast<Duration>(Seconds(seconds));
}

double secondsBetween(Date earlier, Date later) {
    using Seconds = std::chrono::duration<double>;
    return std::chrono::duration_cast<Seconds>(later.time_since_epoch()).count() -
           std::chrono::duration_cast<Seconds>(earlier.time_since_epoch()).count();
}

Date dateFrom(const timespec& stamp) {
    const auto limit = std::chrono::duration_cast<std::chrono::seconds>(Duration::max()).count() - 1;
    if (stamp.tv_sec > limit) return distantFuture;
    if (stamp.tv_sec < -limit) return distantPast;
    return Date(std::chrono::duration_cast<Duration>(std::chrono::seconds(stamp.tv_sec) +
                                                     std::chrono::nanoseconds(stamp.tv_nsec)));
}

std::string toISO8601(Date date) {
    // A clock of microseconds reaches further than what can be read again.
    const auto second = std::clamp(std::chrono::floor<std::chrono::seconds>(date), earliest, latest);
    const auto day = std::chrono::floor<std::chrono::days>(second);
    const std::chrono::year_month_day civil(day);
    const std::chrono::hh_mm_ss time(second - day);
    return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}Z", static_cast<int>(civil.year()),
                       static_cast<unsigned>(civil.month()), static_cast<unsigned>(civil.day()),
                       time.hours().count(), time.minutes().count(), time.seconds().count());
}

std::optional<Date> fromISO8601(std::string_view text) {
    const auto year = takeDigits(text, 4);
    if (!year || !take(text, '-')) return std::nullopt;
    const auto month = takeDigits(text, 2);
    if (!month || !take(text, '-')) return std::nullopt;
    const auto day = takeDigits(text, 2);
    if (!day || !take(text, 'T')) return std::nullopt;
    const auto hour = takeDigits(text, 2);
    if (!hour || !take(text, ':')) return std::nullopt;
    const auto minute = takeDigits(text, 2);
    if (!minute || !take(text, ':')) return std::nullopt;
    const auto second = takeDigits(text, 2);
    const auto zone = takeZone(text);
    if (!second || !zone || *hour > 23 || *minute > 59 || *second > 59) return std::nullopt;

    const std::chrono::year_month_day civil{std::chrono::year(*year),
                                            std::chrono::month(static_cast<unsigned>(*month)),
                                            std::chrono::day(static_cast<unsigned>(*day))};
    if (!civil.ok()) return std::nullopt;
    const std::chrono::sys_seconds moment = std::chrono::sys_days(civil) + std::chrono::hours(*hour) +
                                            std::chrono::minutes(*minute) + std::chrono::seconds(*second) -
                                            *zone;
    return dateFrom({.tv_sec = moment.time_since_epoch().count(), .tv_nsec = 0});
}

std::string DateText::medium(Date date, const std::string& locale) {
    const std::unique_ptr<icu::DateFormat> format(
        icu::DateFormat::createDateInstance(icu::DateFormat::kMedium, icu::Locale(locale.c_str())));
    if (!format) return toISO8601(date).substr(0, 10); // ICU found none of its data
    using Milliseconds = std::chrono::duration<double, std::milli>;
    icu::UnicodeString text;
    format->format(std::chrono::duration_cast<Milliseconds>(date.time_since_epoch()).count(), text);
    std::string utf8;
    return text.toUTF8String(utf8);
}

std::string DateText::local(Date date, const char* format) {
    const std::time_t seconds = std::chrono::system_clock::to_time_t(date);
    std::tm local{};
    if (::localtime_r(&seconds, &local) == nullptr) return toISO8601(date);
    std::array<char, 64> text{};
    return {text.data(), std::strftime(text.data(), text.size(), format, &local)};
}

} // namespace loftmere
