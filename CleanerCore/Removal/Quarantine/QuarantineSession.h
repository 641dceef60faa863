#pragma once

#include "CleanerCore/Records/CleanCategory.h"
#include "CleanerCore/Records/CleanReport.h"
#include "CleanerCore/Support/Date.h"
#include "CleanerCore/Support/Json.h"
#include "CleanerCore/Support/Result.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace loftmere {

// One item in quarantine.
struct QuarantineEntry {
    std::string originalPath; // where the item was, absolute
    std::string storedName;   // its name among the session's items
    int64_t size = 0;         // bytes, as the scan reported them
    CleanCategory category = CleanCategory::userCaches;
    bool restored = false; // it has been moved back

    const std::string& id() const { return storedName; }

    bool operator==(const QuarantineEntry&) const = default;
};

// The items moved to quarantine in one clean. A value owned by the one caller that began it. Its codec reads
// manifests that anyone may have written; fuzzers call it.
struct QuarantineSession {
    std::string id; // also its folder's name
    Date createdAt;
    Date expiresAt; // fixed when it was begun
    TriggerSource trigger;
    std::vector<QuarantineEntry> entries; // in order of arrival

    // Both count the entries that are not restored.
    int64_t totalSize() const; // bytes
    int activeCount() const;

    bool operator==(const QuarantineSession&) const = default;
};

// What a restore did.
struct Restored {
    size_t count = 0;  // entries whose items are back
    int64_t bytes = 0; // of those
    std::vector<CleanFailure> failures;
};

// Whether a text has the form of an id, "20260115-093012-7F3A9C". Folders with other names are not ours.
bool isSessionID(std::string_view text);

LOFTMERE_JSON_CODEC(QuarantineEntry);
LOFTMERE_JSON_CODEC(QuarantineSession);

// Why something cannot go to quarantine or come back, in the words that the user sees.
namespace QuarantineError {

Failure destinationExists(const std::string& path);
Failure missing(const std::string& path);
Failure differentVolume(const std::string& name);

// Another run is writing the session.
Failure inUse(const std::string& sessionID);

// A text that is not an id, and could lead out of the quarantine.
Failure invalidID(const std::string& sessionID);

} // namespace QuarantineError

} // namespace loftmere
