#include "CleanerCore/Removal/Quarantine/QuarantineError.h"

#include "CleanerCore/Support/Text.h"

#include <fmt/format.h>

namespace loftmere::QuarantineError {

namespace {

Failure saying(fmt::format_string<std::string> words, const std::string& text) {
    return Failure::saying(fmt::format(words, printable(text)));
}

} // namespace

Failure destinationExists(const std::string& path) {
    return saying("Something already exists at {}. Move it first, then restore.", path);
}

Failure missing(const std::string& path) {
    return saying("Quarantined copy is missing: {}", path);
}

Failure differentVolume(const std::string& name) {
    return saying("{} is on another drive — quarantining it would copy the whole file onto this Mac", name);
}

Failure unreadableName(const std::string& path) {
    return saying("{} has a name that is not valid text, so it could not be brought back from quarantine",
                  path);
}

Failure inUse(const std::string& sessionID) {
    return saying("The quarantine session {} is being written by another run. Try again when that has ended.",
                  sessionID);
}

Failure invalidID(const std::string& sessionID) {
    return saying("{} is not the name of a quarantine session", sessionID);
}

Failure noWayBack(const std::string& path, const std::string& reason) {
    return Failure::saying(
        fmt::format("{} could not be brought back from quarantine: {}", printable(path), reason));
}

Failure unsafePlace(const std::string& path, const std::string& reason) {
    return Failure::saying(fmt::format("{} cannot be restored: {}", printable(path), reason));
}

} // namespace loftmere::QuarantineError
