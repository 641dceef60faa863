#include "CleanerCore/Records/Risk.h"

#include <nlohmann/json.hpp>

namespace loftmere {

const char* label(Risk risk) {
    switch (risk) {
    case Risk::safe: return "Safe";
    case Risk::review: return "Review";
    case Risk::caution: return "Caution";
    }
    return "";
}

Json JsonCodec<Risk>::encode(const Risk& value) {
    return static_cast<int>(value);
}

std::optional<Risk> JsonCodec<Risk>::decode(const Json& json) {
    const auto raw = JsonCodec<int>::decode(json);
    if (!raw || *raw < 0 || *raw > 2) return std::nullopt;
    return static_cast<Risk>(*raw);
}

} // namespace loftmere
