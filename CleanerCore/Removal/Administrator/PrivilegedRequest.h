#pragma once

#include "CleanerCore/Removal/Administrator/PrivilegedSession.h"

#include <optional>
#include <string>

// What each operation of the privileged session is on the wire, and without a session.
namespace loftmere {

// The request without the token: "RM {base64} {base64}".
std::string requestWords(const PrivilegedSession::Operation& operation);

// Seconds that its reply may take.
double requestLimit(const PrivilegedSession::Operation& operation);

struct OneShotCommand {
    std::string line;    // for a shell
    std::string purpose; // told to the user
};

// The command that does the same by itself; absent for a removal.
std::optional<OneShotCommand> oneShotCommand(const PrivilegedSession::Operation& operation);

} // namespace loftmere
