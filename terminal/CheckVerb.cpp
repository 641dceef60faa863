#include "CleanerCore/Safety/SafetyPolicy.h"
#include "CleanerCore/Support/PathText.h"
#include "CleanerCore/Support/Text.h"
#include "terminal/Verbs.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <filesystem>

namespace loftmere {

namespace {

struct Judgement {
    const char* verdict; // the case's name
    std::string detail;  // the reason or the provider, where there is one
    std::string words;
    Ink ink;
};

Judgement judge(const SafetyPolicy::Verdict& verdict) {
    struct Judge {
        Judgement operator()(const SafetyPolicy::Allowed&) const {
            return {"allowed", "", "may be removed", Ink::green};
        }
        Judgement operator()(const SafetyPolicy::SyncedCloud& synced) const {
            return {"syncedCloud", synced.provider,
                    fmt::format("kept in sync by {}: removed here, it goes from all your devices",
                                synced.provider),
                    Ink::yellow};
        }
        Judgement operator()(const SafetyPolicy::NeedsAdmin&) const {
            return {"needsAdmin", "", "may be removed with administrator rights", Ink::yellow};
        }
        Judgement operator()(const SafetyPolicy::Blocked& blocked) const {
            return {"blocked", blocked.reason, fmt::format("never removed: {}", blocked.reason), Ink::red};
        }
    };
    return std::visit(Judge{}, verdict);
}

// A shell's user means a relative path from where they stand.
std::string absolute(const std::string& path) {
    if (path.empty() || path.starts_with('/') || path.starts_with('~')) return path;
    std::error_code error;
    const auto here = std::filesystem::current_path(error);
    return error ? path : joinPath(here.string(), path);
}

ExitStatus check(Session& session, const std::vector<std::string>& paths) {
    const bool knowsSettings = session.knowsSettings();
    const SafetyPolicy policy(session.model().paths, session.model().config->protectedPaths);
    Json verdicts = Json::array();
    for (const std::string& path : paths) {
        const Judgement judgement = judge(policy.check(absolute(path)));
        if (session.json()) {
            Json one{{"path", path}, {"verdict", judgement.verdict}};
            if (!judgement.detail.empty()) one["detail"] = judgement.detail;
            verdicts.push_back(std::move(one));
        } else {
            Console& console = session.console();
            console.printLine(fmt::format("{}: {}", printable(path),
                                          console.paint(judgement.ink, printable(judgement.words))));
        }
    }
    if (session.json()) session.print(verdicts);
    return knowsSettings ? ExitStatus::done : ExitStatus::failed;
}

} // namespace

void declareCheck(CLI::App& program, Request& request) {
    const auto paths = std::make_shared<std::vector<std::string>>();
    CLI::App& verb = addVerb(program, request, "check", "Tell whether a path may be removed, and why not");
    verb.add_option("PATH", *paths, "The paths to judge; they need not exist")->required();
    verb.callback(
        [&request, paths] { request.run = [paths](Session& session) { return check(session, *paths); }; });
}

} // namespace loftmere
