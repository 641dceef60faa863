#pragma once

#include "CleanerCore/Scanning/JunkScanner.h"

#include <cstdint>
#include <string_view>

namespace loftmere {

// Proposes what Docker itself says it can reclaim, as commands of its own. Where Docker is missing, stopped
// or does not answer, that is nothing.
class DockerScanner : public JunkScanner {
public:
    // `toolLimit` is the time in seconds that Docker may take to answer.
    explicit DockerScanner(double toolLimit = 20) : toolLimit_(toolLimit) {}

    CleanCategory category() const override { return CleanCategory::docker; }
    Result<std::vector<ScanItem>> scan(const ScanContext& context) const override;

    // The bytes that Docker means by a text such as "1.2GB (50%)", in decimal units; 0 when it is none.
    static int64_t parseSize(std::string_view text);

private:
    double toolLimit_;
};

} // namespace loftmere
