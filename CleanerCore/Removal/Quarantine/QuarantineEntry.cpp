#include "CleanerCore/Removal/Quarantine/QuarantineEntry.h"

#include "CleanerCore/Support/RecordCodec.h"

namespace loftmere {

namespace {

constexpr std::tuple fields{
    field("originalPath", &QuarantineEntry::originalPath),
    field("storedName", &QuarantineEntry::storedName),
    field("size", &QuarantineEntry::size),
    field("category", &QuarantineEntry::category),
    field("restored", &QuarantineEntry::restored),
};

} // namespace

Json JsonCodec<QuarantineEntry>::encode(const QuarantineEntry& value) {
    return encodeRecord(value, fields);
}

std::optional<QuarantineEntry> JsonCodec<QuarantineEntry>::decode(const Json& json) {
    return decodeRecord(json, QuarantineEntry{}, fields);
}

} // namespace loftmere
