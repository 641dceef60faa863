#pragma once

#include <chrono>
#include <ctime>
#include <optional>
#include <string>
#include <string_view>

namespace loftmere {

// A moment in time, UTC.
using Date = std::chrono::system_clock::time_point;

inline constexpr Date distantPast = Date::min();
inline constexpr Date distantFuture = Date::max();

// The present moment. Logic takes `now` as an argument; only code that starts an operation asks here.
Date currentDate();

// `date` plus a number of seconds, which may be negative. Saturates instead of overflowing, so that absurd
// settings and hostile file dates stay in order.
Date addSeconds(Date date, double seconds);

// `later` minus `earlier`, in seconds.
double secondsBetween(Date earlier, Date later);

// The date of a file's time stamp, clamped to what a Date can hold.
Date dateFrom(const timespec& stamp);

// "2026-03-01T09:30:00Z": whole seconds, truncated toward the past.
std::string toISO8601(Date date);

// Reads the form above, also with an offset such as "+02:00" instead of the "Z". Absent for a fraction of a
// second, a missing zone or a day that does not exist.
std::optional<Date> fromISO8601(std::string_view text);

// Dates as people read them, in the computer's time zone. Any thread.
namespace DateText {

// The day in a locale's medium style, such as "Mar 1, 2026" for "en_US" and "01.03.2026" for "de_DE". An
// unknown locale gets the style of its language, else a neutral one.
std::string medium(Date date, const std::string& locale);

// The moment in a format of strftime with numbers alone, such as "%Y-%m-%d %H:%M".
std::string local(Date date, const char* format);

} // namespace DateText

} // namespace loftmere
