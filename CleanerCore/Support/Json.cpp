#include "CleanerCore/Support/Json.h"

#include <nlohmann/json.hpp>

#include <cmath>
#include <limits>
#include <new>

namespace loftmere {

namespace {

// A whole JSON number within [low, high]. 3.0 is as good as 3.
std::optional<int64_t> wholeNumber(const Json& json, int64_t low, int64_t high) {
    int64_t value = 0;
    if (json.is_number_unsigned()) {
        const auto positive = json.get<uint64_t>();
        if (positive > static_cast<uint64_t>(std::numeric_limits<int64_t>::max())) return std::nullopt;
        value = static_cast<int64_t>(positive);
    } else if (json.is_number_integer()) {
        value = json.get<int64_t>();
    } else if (json.is_number_float()) {
        const auto real = json.get<double>();
        if (std::trunc(real) != real || std::abs(real) >= 0x1p63) return std::nullopt;
        value = static_cast<int64_t>(real);
    } else {
        return std::nullopt;
    }
    if (value < low || value > high) return std::nullopt;
    return value;
}

// None of our files is nested deeper. Copying or comparing one that is would need as deep a stack.
constexpr int deepestNesting = 256;

bool isTooDeep(std::string_view text) {
    int depth = 0;
    bool isInString = false;
    for (size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (isInString && c == '\\')
            ++i;
        else if (c == '"')
            isInString = !isInString;
        else if (!isInString && (c == '[' || c == '{') && ++depth > deepestNesting)
            return true;
        else if (!isInString && (c == ']' || c == '}'))
            --depth;
    }
    return false;
}

} // namespace

Result<std::string> writeJson(const Json& value, JsonStyle style) {
    try {
        return value.dump(style == JsonStyle::pretty ? 2 : -1);
    } catch (const Json::exception&) {
        return failed(Failure::saying("The text is not valid UTF-8 and cannot be written as JSON"));
    }
}

std::optional<Json> parseJson(std::string_view text) {
    if (isTooDeep(text)) return std::nullopt;
    try {
        Json value = Json::parse(text, nullptr, /*allow_exceptions=*/false);
        if (value.is_discarded()) return std::nullopt;
        return value;
    } catch (const std::bad_alloc&) {
        return std::nullopt;
    }
}

Json JsonCodec<bool>::encode(const bool& value) {
    return value;
}

std::optional<bool> JsonCodec<bool>::decode(const Json& json) {
    if (!json.is_boolean()) return std::nullopt;
    return json.get<bool>();
}

Json JsonCodec<int64_t>::encode(const int64_t& value) {
    return value;
}

std::optional<int64_t> JsonCodec<int64_t>::decode(const Json& json) {
    return wholeNumber(json, std::numeric_limits<int64_t>::min(), std::numeric_limits<int64_t>::max());
}

Json JsonCodec<int>::encode(const int& value) {
    return value;
}

std::optional<int> JsonCodec<int>::decode(const Json& json) {
    const auto value = wholeNumber(json, std::numeric_limits<int>::min(), std::numeric_limits<int>::max());
    if (!value) return std::nullopt;
    return static_cast<int>(*value);
}

Json JsonCodec<double>::encode(const double& value) {
    return value;
}

std::optional<double> JsonCodec<double>::decode(const Json& json) {
    if (!json.is_number()) return std::nullopt;
    return json.get<double>();
}

Json JsonCodec<std::string>::encode(const std::string& value) {
    return value;
}

std::optional<std::string> JsonCodec<std::string>::decode(const Json& json) {
    if (!json.is_string()) return std::nullopt;
    return json.get<std::string>();
}

Json JsonCodec<Date>::encode(const Date& value) {
    return toISO8601(value);
}

std::optional<Date> JsonCodec<Date>::decode(const Json& json) {
    if (!json.is_string()) return std::nullopt;
    return fromISO8601(json.get_ref<const std::string&>());
}

} // namespace loftmere
