#include "CleanerCore/Removal/Quarantine/QuarantineSession.h"

#include "CleanerCore/Support/ByteSum.h"
#include "CleanerCore/Support/RecordCodec.h"

#include <algorithm>

namespace loftmere {

namespace {

constexpr std::tuple fields{
    field("id", &QuarantineSession::id),
    field("createdAt", &QuarantineSession::createdAt),
    field("expiresAt", &QuarantineSession::expiresAt),
    field("trigger", &QuarantineSession::trigger),
    field("entries", &QuarantineSession::entries),
};

} // namespace

int64_t QuarantineSession::totalSize() const {
    int64_t total = 0;
    for (const QuarantineEntry& entry : entries) addBytes(total, entry.restored ? 0 : entry.size);
    return total;
}

int QuarantineSession::activeCount() const {
    return static_cast<int>(std::ranges::count(entries, false, &QuarantineEntry::restored));
}

Json JsonCodec<QuarantineSession>::encode(const QuarantineSession& value) {
    return encodeRecord(value, fields);
}

std::optional<QuarantineSession> JsonCodec<QuarantineSession>::decode(const Json& json) {
    return decodeRecord(json, QuarantineSession{}, fields);
}

} // namespace loftmere
