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

// The present moment. Logic takes `now` as an argument; only those who start an operation ask here.
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

// Reads the form above, also with an offset such as "+02:00" for the "Z". A fraction of a second, a missing
// zone or a day that does not exist is refused.
std::optional<Date> fromISO8601(std::string_view text);

} // namespace loftmere
