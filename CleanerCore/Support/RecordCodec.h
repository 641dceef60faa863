#pragma once

#include "CleanerCore/Support/Enumeration.h"
#include "CleanerCore/Support/Json.h"

#include <nlohmann/json.hpp>

#include <tuple>
#include <type_traits>
#include <utility>
#include <variant>

// Codecs for lists, maps, enumerations, records and variants. A record declares its codec in its header with
// LOFTMERE_JSON_CODEC. Its source describes it once, in a table of fields that both writes and reads it:
//
//     constexpr std::tuple fields{
//         field("itemID", &CleanFailure::itemID),
//         field("message", &CleanFailure::message),
//     };
//     LOFTMERE_RECORD_CODEC(CleanFailure, fields)
namespace loftmere {

template <class T> struct JsonCodec<std::vector<T>> {
    static Json encode(const std::vector<T>& values) {
        Json array = Json::array();
        for (const T& value : values) array.push_back(JsonCodec<T>::encode(value));
        return array;
    }
    static std::optional<std::vector<T>> decode(const Json& json) {
        if (!json.is_array()) return std::nullopt;
        std::vector<T> values;
        values.reserve(json.size());
        for (const Json& element : json) {
            auto value = JsonCodec<T>::decode(element);
            if (!value) return std::nullopt;
            values.push_back(std::move(*value));
        }
        return values;
    }
};

template <class T> struct JsonCodec<std::map<std::string, T>> {
    static Json encode(const std::map<std::string, T>& values) {
        Json object = Json::object();
        for (const auto& [key, value] : values) object[key] = JsonCodec<T>::encode(value);
        return object;
    }
    static std::optional<std::map<std::string, T>> decode(const Json& json) {
        if (!json.is_object()) return std::nullopt;
        std::map<std::string, T> values;
        for (const auto& [key, element] : json.items()) {
            auto value = JsonCodec<T>::decode(element);
            if (!value) return std::nullopt;
            values.emplace(key, std::move(*value));
        }
        return values;
    }
};

// An enumeration is its raw value: text or a whole number.
template <Tabulated E> struct JsonCodec<E> {
    using RawValue = decltype(rawValue(E{}));
    static constexpr bool isNumber = std::is_integral_v<RawValue>;

    static Json encode(const E& value) { return rawValue(value); }
    static std::optional<E> decode(const Json& json) {
        const auto raw = JsonCodec<std::conditional_t<isNumber, RawValue, std::string>>::decode(json);
        return raw ? caseNamed<E>(*raw) : std::nullopt;
    }
};

// Whether a key must be there. A `defaulted` field keeps its default when its key is missing or null.
enum class Presence { required, defaulted };

template <class Record, class T> struct RecordField {
    const char* key;
    T Record::* member;
    Presence presence;
};

template <class Record, class T>
constexpr RecordField<Record, T> field(const char* key, T Record::* member,
                                       Presence presence = Presence::required) {
    return {key, member, presence};
}

// A case of an enumeration with payload, which is a std::variant with one struct per case. In JSON it is an
// object with exactly one key, the case's name. The value is an object that holds the payload, under "_0"
// if it has no label and else under its label.
template <class Case, class... Fields> struct VariantCase {
    const char* name;
    std::tuple<Fields...> payload;
};

template <class Case, class... Fields>
constexpr VariantCase<Case, Fields...> variantCase(const char* name, Fields... payload) {
    return {name, {payload...}};
}

namespace detail {

template <class T> inline constexpr bool isOptional = false;
template <class T> inline constexpr bool isOptional<std::optional<T>> = true;

template <class Record, class T>
void encodeField(Json& object, const Record& record, const RecordField<Record, T>& field) {
    const T& value = record.*field.member;
    if constexpr (isOptional<T>) {
        if (value) object[field.key] = JsonCodec<typename T::value_type>::encode(*value);
    } else {
        object[field.key] = JsonCodec<T>::encode(value);
    }
}

template <class Record, class T>
bool decodeField(const Json& object, Record& record, const RecordField<Record, T>& field) {
    const auto found = object.find(field.key);
    const bool absent = found == object.end() || found->is_null();
    if constexpr (isOptional<T>) {
        if (absent) return true;
        record.*field.member = JsonCodec<typename T::value_type>::decode(*found);
        return (record.*field.member).has_value();
    } else {
        if (absent) return field.presence == Presence::defaulted;
        auto value = JsonCodec<T>::decode(*found);
        if (value) record.*field.member = std::move(*value);
        return value.has_value();
    }
}

} // namespace detail

// An object of all fields, without those that are an absent std::optional.
template <class Record, class... Fields>
Json encodeRecord(const Record& record, const std::tuple<Fields...>& fields) {
    Json object = Json::object();
    std::apply([&](const auto&... each) { (detail::encodeField(object, record, each), ...); }, fields);
    return object;
}

// The record with the object's values over its defaults. Absent when a required key is missing or any value
// has the wrong type. Unknown keys are ignored.
template <class Record, class... Fields>
std::optional<Record> decodeRecord(const Json& json, Record record, const std::tuple<Fields...>& fields) {
    if (!json.is_object()) return std::nullopt;
    const bool good = std::apply(
        [&](const auto&... each) { return (detail::decodeField(json, record, each) && ...); }, fields);
    if (!good) return std::nullopt;
    return record;
}

namespace detail {

template <class Variant, class Case, class... Fields>
void encodeCase(Json& object, const Variant& variant, const VariantCase<Case, Fields...>& variantCase) {
    const Case* held = std::get_if<Case>(&variant);
    if (held != nullptr) object[variantCase.name] = encodeRecord(*held, variantCase.payload);
}

template <class Variant, class Case, class... Fields>
void decodeCase(const Json& object, std::optional<Variant>& variant,
                const VariantCase<Case, Fields...>& variantCase) {
    const auto found = object.find(variantCase.name);
    if (found == object.end()) return;
    auto held = decodeRecord(*found, Case{}, variantCase.payload);
    if (held) variant = std::move(*held);
}

} // namespace detail

template <class... Held, class... Cases>
Json encodeVariant(const std::variant<Held...>& variant, const std::tuple<Cases...>& cases) {
    static_assert(sizeof...(Held) == sizeof...(Cases), "a case for each alternative");
    Json object = Json::object();
    std::apply([&](const auto&... each) { (detail::encodeCase(object, variant, each), ...); }, cases);
    return object;
}

// Absent unless the object has exactly one key, which names a case, with a payload of the right shape.
template <class Variant, class... Cases>
std::optional<Variant> decodeVariant(const Json& json, const std::tuple<Cases...>& cases) {
    std::optional<Variant> variant;
    if (!json.is_object() || json.size() != 1) return variant;
    std::apply([&](const auto&... each) { (detail::decodeCase(json, variant, each), ...); }, cases);
    return variant;
}

} // namespace loftmere

// Define, in namespace loftmere, the codec that a header declares.
#define LOFTMERE_RECORD_CODEC(Type, fields)                                                                  \
    Json JsonCodec<Type>::encode(const Type& value) {                                                        \
        return encodeRecord(value, fields);                                                                  \
    }                                                                                                        \
    std::optional<Type> JsonCodec<Type>::decode(const Json& json) {                                          \
        return decodeRecord(json, Type{}, fields);                                                           \
    }

#define LOFTMERE_VARIANT_CODEC(Type, cases)                                                                  \
    Json JsonCodec<Type>::encode(const Type& value) {                                                        \
        return encodeVariant(value, cases);                                                                  \
    }                                                                                                        \
    std::optional<Type> JsonCodec<Type>::decode(const Json& json) {                                          \
        return decodeVariant<Type>(json, cases);                                                             \
    }
