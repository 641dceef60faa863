#pragma once

#include "CleanerCore/Records/CommandSpec.h"
#include "CleanerCore/Support/Json.h"

#include <string>
#include <variant>

namespace loftmere {

// A path that the user may remove.
struct PathTarget {
    std::string path;
    bool operator==(const PathTarget&) const = default;
};

// A tool run that frees space.
struct CommandTarget {
    CommandSpec command;
    bool operator==(const CommandTarget&) const = default;
};

// A path that needs administrator rights.
struct AdminPathTarget {
    std::string path;
    bool operator==(const AdminPathTarget&) const = default;
};

// The local copy of a synced file, to be released; the cloud keeps the file.
struct EvictTarget {
    std::string path;
    bool operator==(const EvictTarget&) const = default;
};

// How an item is to be acted on.
using ItemTarget = std::variant<PathTarget, CommandTarget, AdminPathTarget, EvictTarget>;

LOFTMERE_JSON_CODEC(ItemTarget);

} // namespace loftmere
