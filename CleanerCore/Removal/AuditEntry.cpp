#include "CleanerCore/Removal/AuditEntry.h"

#include "CleanerCore/Support/RecordCodec.h"

namespace loftmere {

namespace {

constexpr std::tuple fields{
    field("id", &AuditEntry::id),           field("date", &AuditEntry::date),
    field("action", &AuditEntry::action),   field("target", &AuditEntry::target),
    field("size", &AuditEntry::size),       field("category", &AuditEntry::category),
    field("trigger", &AuditEntry::trigger), field("success", &AuditEntry::success),
    field("message", &AuditEntry::message),
};

} // namespace

Json JsonCodec<AuditEntry>::encode(const AuditEntry& value) {
    return encodeRecord(value, fields);
}

std::optional<AuditEntry> JsonCodec<AuditEntry>::decode(const Json& json) {
    return decodeRecord(json, AuditEntry{}, fields);
}

} // namespace loftmere
