#pragma once

#include "CleanerCore/Scanning/ScannerRegistry.h"

#include <functional>
#include <map>

namespace loftmere::test {

// What a scanner shall do, by category.
using ScannerScript =
    std::map<CleanCategory, std::function<Result<std::vector<ScanItem>>(const ScanContext&)>>;

// A scanner whose findings the test decides.
class ScriptedScanner : public JunkScanner {
public:
    ScriptedScanner(CleanCategory category, ScannerScript::mapped_type body)
        : category_(category), body_(std::move(body)) {}

    CleanCategory category() const override { return category_; }
    Result<std::vector<ScanItem>> scan(const ScanContext& context) const override { return body_(context); }

private:
    CleanCategory category_;
    ScannerScript::mapped_type body_;
};

inline auto scripted(ScannerScript script) {
    return [script = std::move(script)](const std::set<CleanCategory>& wanted) {
        ScannerRegistry::Scanners scanners;
        for (const auto& [category, body] : script) {
            if (wanted.contains(category))
                scanners.push_back(std::make_unique<ScriptedScanner>(category, body));
        }
        return scanners;
    };
}

} // namespace loftmere::test
