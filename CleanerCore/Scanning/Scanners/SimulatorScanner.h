#pragma once

#include "CleanerCore/Scanning/JunkScanner.h"

namespace loftmere {

// Proposes the symbols of all but the newest version of each kind of device, the simulators' caches, and, as
// one command of the developer tools, the simulators that no installed runtime can start.
class SimulatorScanner : public JunkScanner {
public:
    // `toolLimit` is the time in seconds that the developer tools may take to list their simulators.
    explicit SimulatorScanner(double toolLimit = 30) : toolLimit_(toolLimit) {}

    CleanCategory category() const override { return CleanCategory::simulators; }
    Result<std::vector<ScanItem>> scan(const ScanContext& context) const override;

private:
    std::vector<ScanItem> unavailableSimulators(const ScanContext& context) const;

    double toolLimit_;
};

} // namespace loftmere
