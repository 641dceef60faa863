#pragma once

#include "CleanerCore/Support/Result.h"

#include <string>

// Why something cannot go to quarantine or come back, in the words that the user sees.
namespace loftmere::QuarantineError {

Failure destinationExists(const std::string& path);
Failure missing(const std::string& path);
Failure differentVolume(const std::string& name);

// The name cannot be written down, so the item could not be brought back.
Failure unreadableName(const std::string& path);

// Another run is just writing the session.
Failure inUse(const std::string& sessionID);

// A session's id that could lead out of the quarantine.
Failure invalidID(const std::string& sessionID);

// The policy lets nothing be taken from there, so nothing would be restored to it either.
Failure noWayBack(const std::string& path, const std::string& reason);

// The place that the manifest names is none where the item can have stood.
Failure unsafePlace(const std::string& path, const std::string& reason);

} // namespace loftmere::QuarantineError
