#include "CleanerCore/Removal/Quarantine/QuarantineSession.h"

#include "CleanerCore/Support/ByteCount.h"
#include "CleanerCore/Support/RecordCodec.h"
#include "CleanerCore/Support/Text.h"

#include <fmt/format.h>

#include <algorithm>

namespace loftmere {

namespace {

constexpr std::tuple entryFields{
    field("originalPath", &QuarantineEntry::originalPath),
    field("storedName", &QuarantineEntry::storedName),
    field("size", &QuarantineEntry::size),
    field("category", &QuarantineEntry::category),
    field("restored", &QuarantineEntry::restored),
};

constexpr std::tuple sessionFields{
    field("id", &QuarantineSession::id),
    field("createdAt", &QuarantineSession::createdAt),
    field("expiresAt", &QuarantineSession::expiresAt),
    field("trigger", &QuarantineSession::trigger),
    field("entries", &QuarantineSession::entries),
};

Failure saying(fmt::format_string<std::string> words, const std::string& text) {
    return Failure::saying(fmt::format(words, printable(text)));
}

} // namespace

LOFTMERE_RECORD_CODEC(QuarantineEntry, entryFields)

int64_t QuarantineSession::totalSize() const {
    int64_t total = 0;
    for (const QuarantineEntry& entry : entries) addBytes(total, entry.restored ? 0 : entry.size);
    return total;
}

int QuarantineSession::activeCount() const {
    return static_cast<int>(std::ranges::count(entries, false, &QuarantineEntry::restored));
}

LOFTMERE_RECORD_CODEC(QuarantineSession, sessionFields)

bool isSessionID(std::string_view text) {
    constexpr std::string_view form = "00000000-000000-FFFFFF";
    return std::ranges::equal(text, form, [](char c, char pattern) {
        const bool isDigit = c >= '0' && c <= '9';
        if (pattern == '-') return c == '-';
        return isDigit || (pattern == 'F' && c >= 'A' && c <= 'F');
    });
}

namespace QuarantineError {

Failure destinationExists(const std::string& path) {
    return saying("Something already exists at {}. Move it first, then restore.", path);
}

Failure missing(const std::string& path) {
    return saying("Quarantined copy is missing: {}", path);
}

Failure differentVolume(const std::string& name) {
    return saying("{} is on another drive — quarantining it would copy the whole file onto this Mac", name);
}

Failure inUse(const std::string& sessionID) {
    return saying("The quarantine session {} is being written by another run. Try again when that has ended.",
                  sessionID);
}

Failure invalidID(const std::string& sessionID) {
    return saying("{} is not the name of a quarantine session", sessionID);
}

} // namespace QuarantineError

} // namespace loftmere
