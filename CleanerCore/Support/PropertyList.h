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

// A value of a property list, the platform's format for facts about bundles, jobs and backups.
struct PropertyList {
    using Data = std::vector<std::byte>;
    using Array = std::vector<PropertyList>;
    using Dictionary = std::map<std::string, PropertyList, std::less<>>;

    // std::monostate is one of the few kinds that nobody here asks for, or a date that cannot be read or that
    // a Date cannot hold.
    std::variant<std::monostate, bool, int64_t, double, std::string, Date, Data, Array, Dictionary> value;

    // The longest property list that is parsed, in bytes. A backup's holds a picture of every app.
    static constexpr size_t largest = size_t{64} << 20;

    // The top value of a property list, binary or XML, the latter in UTF-8 or, with a byte-order mark, in
    // UTF-16. Absent when the bytes are damaged or hostile: longer than `largest`, nested deeper than 100
    // levels, or with so many values that they would take far more memory. Text is valid UTF-8. Any thread.
    static std::optional<PropertyList> parse(std::string_view bytes);

    // The value if it is of this kind, else null.
    template <class T> const T* as() const { return std::get_if<T>(&value); }

    // The value under the key of a dictionary if it is of this kind, else null.
    template <class T> const T* at(std::string_view key) const {
        const auto* dictionary = as<Dictionary>();
        if (dictionary == nullptr) return nullptr;
        const auto found = dictionary->find(key);
        return found == dictionary->end() ? nullptr : found->second.template as<T>();
    }
};

} // namespace loftmere
