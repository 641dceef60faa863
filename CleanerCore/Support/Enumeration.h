#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

// Everything that is known about the cases of an enumeration is one table, next to the enumeration: a row for
// each case in declared order, its first column the case itself.
//
//     enum class Risk { safe, review };
//     struct RiskTraits {
//         Risk value;
//         int rawValue;      // what stands for the case in files
//         const char* label; // what stands for it on screen
//     };
//     template <> inline constexpr auto tableOf<Risk> = std::to_array<RiskTraits>({
//         {Risk::safe, 0, "Safe"},
//         {Risk::review, 1, "Review"},
//     });
//     static_assert(isComplete<Risk>());
//
// A row without one of its columns, and a table without one of its rows, do not compile. An enumeration whose
// rows have a `rawValue` has a JsonCodec (RecordCodec.h).
namespace loftmere {

template <class E> inline constexpr std::nullptr_t tableOf = nullptr;

template <class E>
concept Tabulated = requires { tableOf<E>.size(); };

template <Tabulated E> constexpr const auto& traits(E value) {
    return tableOf<E>[static_cast<size_t>(value)];
}

template <Tabulated E> constexpr auto rawValue(E value) {
    return traits(value).rawValue;
}

template <Tabulated E> constexpr const char* label(E value) {
    return traits(value).label;
}

// The case with this raw value, absent when there is none.
template <Tabulated E> constexpr std::optional<E> caseNamed(const auto& rawValue) {
    for (const auto& row : tableOf<E>) {
        if (rawValue == row.rawValue) return row.value;
    }
    return std::nullopt;
}

// The cases whose rows have this value in a column, in declared order.
template <class Row, class T> auto casesWith(T Row::* column, T value) {
    std::vector<decltype(Row::value)> cases;
    for (const Row& row : tableOf<decltype(Row::value)>) {
        if (row.*column == value) cases.push_back(row.value);
    }
    return cases;
}

namespace detail {

// How the compiler writes a value: "loftmere::Risk::review" for a case, "(loftmere::Risk)3" for any other.
template <auto value> consteval std::string_view spelling() {
    std::string_view text = __PRETTY_FUNCTION__;
    text.remove_prefix(text.find("= ") + 2);
    return text.substr(0, text.find_first_of(";]"));
}

template <auto value> consteval std::string_view caseName() {
    return spelling<value>().substr(spelling<value>().rfind(':') + 1);
}

} // namespace detail

// Whether the table has a row for every case, in declared order.
template <Tabulated E> consteval bool isComplete() {
    constexpr size_t count = tableOf<E>.size();
    for (size_t i = 0; i < count; ++i) {
        if (tableOf<E>[i].value != static_cast<E>(i)) return false;
    }
    return detail::spelling<static_cast<E>(count)>().starts_with('(');
}

// Whether each raw value is the name of its case.
template <Tabulated E> consteval bool isNamedByCases() {
    return []<size_t... i>(std::index_sequence<i...>) {
        return ((tableOf<E>[i].rawValue == detail::caseName<static_cast<E>(i)>()) && ...);
    }(std::make_index_sequence<tableOf<E>.size()>{});
}

} // namespace loftmere
