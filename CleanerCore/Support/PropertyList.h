#pragma once

#include "CleanerCore/Support/Date.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace loftmere {

// A value of a property list, the platform's format for the facts of bundles, jobs and backups. A plain
// value.
struct PropertyList {
    using Data = std::vector<std::byte>;
    using Array = std::vector<PropertyList>;
    using Dictionary = std::map<std::string, PropertyList, std::less<>>;

    // std::monostate stands for the few kinds that nobody here asks for, and for a date that cannot be read
    // or lies beyond what a Date can hold.
    std::variant<std::monostate, bool, int64_t, double, std::string, Date, Data, Array, Dictionary> value;

    // The top value of a property list in either form, binary or XML; the latter in UTF-8 or, with a
    // byte-order mark, in UTF-16. Absent when the bytes are damaged or hostile: longer than 64 MiB, nested
    // deeper than 100 levels, or of so many values that they would take far more. Text is valid UTF-8. Any
    // thread.
    static std::optional<PropertyList> parse(std::string_view bytes);

    // The value if it is of this kind, else null.
    template <class T> const T* as() const { return std::get_if<T>(&value); }

    // What a dictionary holds under the key if that is of this kind, else null.
    template <class T> const T* at(std::string_view key) const {
        const auto* dictionary = as<Dictionary>();
        if (dictionary == nullptr) return nullptr;
        const auto found = dictionary->find(key);
        return found == dictionary->end() ? nullptr : found->second.template as<T>();
    }
};

} // namespace loftmere
