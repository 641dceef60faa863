#pragma once

#include <nlohmann/json.hpp>

#include <optional>
#include <string>
#include <utility>

namespace loftmere {

// An enumeration with payload stands in JSON as an object with exactly one key, the case's name, whose value
// is an object holding the payload: under "_0" when it has no label, else under its label.

inline nlohmann::json encodeCase(const char* name, nlohmann::json payload) {
    return nlohmann::json{{name, std::move(payload)}};
}

// The one case's name and payload, absent unless the object has exactly that shape.
inline std::optional<std::pair<std::string, nlohmann::json>> decodeCase(const nlohmann::json& json) {
    if (!json.is_object() || json.size() != 1 || !json.begin()->is_object()) return std::nullopt;
    return std::pair(json.begin().key(), *json.begin());
}

// A payload's value under `key`, absent when it is missing or has the wrong type.
template <class T> std::optional<T> payloadValue(const nlohmann::json& payload, const char* key) {
    const auto found = payload.find(key);
    return found == payload.end() ? std::nullopt : JsonCodec<T>::decode(*found);
}

} // namespace loftmere
