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

LOFTMERE_RECORD_CODEC(AuditEntry, fields)

} // namespace loftmere
