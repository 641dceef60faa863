#pragma once

#include "CleanerCore/Support/Date.h"
#include "CleanerCore/Support/Result.h"

#include <nlohmann/json_fwd.hpp>

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace loftmere {

using Json = nlohmann::json;

// The JSON form of a type. `decode` is absent when the value has the wrong shape; nothing throws. A record
// declares its codec in its header and defines it in its source with RecordCodec.h.
template <class T> struct JsonCodec;

// Text of a JSON value. `pretty` gives the form of every file kept on disk: indented, keys in alphabetical
// order. Fails when a string in it is not valid UTF-8.
enum class JsonStyle { compact, pretty };
Result<std::string> writeJson(const Json& value, JsonStyle style);

// The value of a JSON text. Absent when it is malformed, nested more than 256 levels deep or too large for
// the memory.
std::optional<Json> parseJson(std::string_view text);

#define LOFTMERE_JSON_CODEC(Type)                                                                            \
    template <> struct JsonCodec<Type> {                                                                     \
        static Json encode(const Type& value);                                                               \
        static std::optional<Type> decode(const Json& json);                                                 \
    }

LOFTMERE_JSON_CODEC(bool);
LOFTMERE_JSON_CODEC(int64_t);
LOFTMERE_JSON_CODEC(int);
LOFTMERE_JSON_CODEC(double);
LOFTMERE_JSON_CODEC(std::string);
LOFTMERE_JSON_CODEC(Date);

} // namespace loftmere
