#include "CleanerCore/Records/Disposal.h"

#include <nlohmann/json.hpp>

namespace loftmere {

const char* rawValue(Disposal disposal) {
    switch (disposal) {
    case Disposal::quarantine: return "quarantine";
    case Disposal::trash: return "trash";
    case Disposal::remove: return "delete";
    }
    return "";
}

const char* label(Disposal disposal) {
    switch (disposal) {
    case Disposal::quarantine: return "Quarantine (undo)";
    case Disposal::trash: return "Move to Trash";
    case Disposal::remove: return "Delete immediately";
    }
    return "";
}

Json JsonCodec<Disposal>::encode(const Disposal& value) {
    return rawValue(value);
}

std::optional<Disposal> JsonCodec<Disposal>::decode(const Json& json) {
    for (const Disposal disposal : {Disposal::quarantine, Disposal::trash, Disposal::remove}) {
        if (json.is_string() && json.get_ref<const std::string&>() == rawValue(disposal)) return disposal;
    }
    return std::nullopt;
}

} // namespace loftmere
