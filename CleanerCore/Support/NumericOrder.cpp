#include "CleanerCore/Support/NumericOrder.h"

#include <algorithm>

namespace loftmere {

namespace {

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

// Takes the run of digits at the front off and answers it without leading zeros.
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
