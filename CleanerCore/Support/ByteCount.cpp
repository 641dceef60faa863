#include "CleanerCore/Support/ByteCount.h"

#include <fmt/format.h>

#include <array>
#include <cmath>
#include <limits>

namespace loftmere {

namespace {

struct Unit {
    const char* name;
    double size;
    int decimals;
};

constexpr std::array units{
    Unit{"KB", 1e3, 0},  Unit{"MB", 1e6, 1},  Unit{"GB", 1e9, 2},
    Unit{"TB", 1e12, 2}, Unit{"PB", 1e15, 2}, Unit{"EB", 1e18, 2},
};

double rounded(double value, int decimals) {
    const double scale = std::pow(10.0, decimals);
    return std::round(value * scale) / scale;
}

std::string withoutTrailingZeros(double value, int decimals) {
    std::string text = fmt::format("{:.{}f}", value, decimals);
    if (decimals == 0) return text;
    text.erase(text.find_last_not_of('0') + 1);
    if (text.ends_with('.')) text.pop_back();
    return text;
}

} // namespace

void addBytes(int64_t& sum, int64_t bytes) {
    using Limits = std::numeric_limits<int64_t>;
    if (__builtin_add_overflow(sum, bytes, &sum)) sum = bytes > 0 ? Limits::max() : Limits::min();
}

std::string ByteFormat::string(int64_t bytes) {
    if (bytes == 0) return "Zero KB";
    const char* sign = bytes < 0 ? "-" : "";
    const double magnitude = std::abs(static_cast<double>(bytes));
    if (magnitude < 1000)
        return fmt::format("{}{:.0f} {}", sign, magnitude, magnitude == 1 ? "byte" : "bytes");
    for (const Unit& unit : units) {
        // A count that rounds up to 1000 of a unit becomes one of the next.
        const double value = rounded(magnitude / unit.size, unit.decimals);
        if (value < 1000 || &unit == &units.back()) {
            return fmt::format("{}{} {}", sign, withoutTrailingZeros(value, unit.decimals), unit.name);
        }
    }
    return {};
}

} // namespace loftmere
