#include "CleanerCore/Platform/Terminal.h"
#include "CleanerCore/Support/PathText.h"
#include "terminal/Verbs.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace loftmere {

namespace {

struct Words {
    PathVerdict::Kind kind;
    const char* name;  // in JSON
    const char* words; // for people; "{}" is the detail
    Ink ink;
};

constexpr Words table[]{
    {PathVerdict::Kind::allowed, "allowed", "may be removed", Ink::green},
    {PathVerdict::Kind::syncedCloud, "syncedCloud",
     "kept in sync by {}: removed here, it goes from all your devices", Ink::yellow},
    {PathVerdict::Kind::needsAdmin, "needsAdmin", "may be removed with administrator rights", Ink::yellow},
    {PathVerdict::Kind::blocked, "blocked", "never removed: {}", Ink::red},
};

const Words& wordsOf(PathVerdict::Kind kind) {
    return table[static_cast<size_t>(kind)];
}

// A relative path starts where the user is.
std::string absolute(const std::string& path) {
    if (path.empty() || path.starts_with('/') || path.starts_with('~')) return path;
    const auto here = currentFolder();
    return here ? joinPath(*here, path) : path;
}

Json jsonOf(const std::string& path, const PathVerdict& verdict) {
    Json json{{"path", path}, {"verdict", wordsOf(verdict.kind).name}};
    if (!verdict.detail.empty()) json["detail"] = verdict.detail;
    return json;
}

void printVerdict(Console& console, const std::string& path, const PathVerdict& verdict) {
    const Words& row = wordsOf(verdict.kind);
    const std::string words = fmt::format(fmt::runtime(row.words), printable(verdict.detail));
    console.printLine(fmt::format("{}: {}", printable(path), console.paint(row.ink, words)));
}

ExitStatus check(Program& program, const std::vector<std::string>& paths) {
    const bool knowsSettings = program.knowsSettings();
    std::vector<std::string> candidates;
    for (const std::string& path : paths) candidates.push_back(absolute(path));
    const auto verdicts =
        program.finish(program.model().check(candidates), [] { return "Looking at each path"; });
    Json document = Json::array();
    for (size_t i = 0; i < paths.size(); ++i) {
        if (program.json())
            document.push_back(jsonOf(paths[i], verdicts[i]));
        else
            printVerdict(program.console(), paths[i], verdicts[i]);
    }
    if (program.json()) program.print(document);
    return knowsSettings ? ExitStatus::done : ExitStatus::failed;
}

} // namespace

void declareCheck(CLI::App& parser, Request& request) {
    const auto paths = std::make_shared<std::vector<std::string>>();
    CLI::App& verb = addVerb(parser, request, "check", "Say whether a path may be removed, and why not");
    addWords(verb, "PATH", *paths, "The paths to judge; they need not exist")->required();
    verb.callback(
        [&request, paths] { request.run = [paths](Program& program) { return check(program, *paths); }; });
}

} // namespace loftmere
