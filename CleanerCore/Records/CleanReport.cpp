#include "CleanerCore/Records/CleanReport.h"

#include "CleanerCore/Support/ByteSum.h"
#include "CleanerCore/Support/RecordCodec.h"

namespace loftmere {

namespace {

constexpr std::tuple failureFields{
    field("itemID", &CleanFailure::itemID),
    field("message", &CleanFailure::message),
};

constexpr std::tuple reportFields{
    field("freedBytes", &CleanReport::freedBytes),
    field("evictedBytes", &CleanReport::evictedBytes),
    field("quarantinedBytes", &CleanReport::quarantinedBytes),
    field("trashedBytes", &CleanReport::trashedBytes),
    field("itemsProcessed", &CleanReport::itemsProcessed),
    field("failures", &CleanReport::failures),
    field("quarantineSessionID", &CleanReport::quarantineSessionID),
    field("skippedProtected", &CleanReport::skippedProtected),
    field("deferredAdmin", &CleanReport::deferredAdmin),
};

} // namespace

int64_t CleanReport::totalHandledBytes() const {
    int64_t total = 0;
    for (const int64_t bytes : {freedBytes, quarantinedBytes, trashedBytes, evictedBytes})
        addBytes(total, bytes);
    return total;
}

Json JsonCodec<CleanFailure>::encode(const CleanFailure& value) {
    return encodeRecord(value, failureFields);
}

std::optional<CleanFailure> JsonCodec<CleanFailure>::decode(const Json& json) {
    return decodeRecord(json, CleanFailure{}, failureFields);
}

Json JsonCodec<CleanReport>::encode(const CleanReport& value) {
    return encodeRecord(value, reportFields);
}

std::optional<CleanReport> JsonCodec<CleanReport>::decode(const Json& json) {
    return decodeRecord(json, CleanReport{}, reportFields);
}

} // namespace loftmere
