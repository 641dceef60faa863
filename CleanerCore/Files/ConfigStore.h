#pragma once

#include "CleanerCore/Files/Paths.h"
#include "CleanerCore/Records/AppConfig.h"
#include "CleanerCore/Support/Result.h"

namespace loftmere {

// The user's settings on disk. No lock: the last writer wins.
class ConfigStore {
public:
    explicit ConfigStore(const Paths& paths) : file_(paths.configFile()) {}

    // A missing or undecodable file gives all defaults and is left where it is.
    AppConfig load() const;

    // Whether there is a file that `load` cannot take: what the user protects is not known then.
    bool isDamaged() const;

    Status save(const AppConfig& config) const;

private:
    std::string file_;
};

} // namespace loftmere
