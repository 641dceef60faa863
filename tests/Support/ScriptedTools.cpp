#include "tests/Support/ScriptedTools.h"

#include "CleanerCore/Process/Shell.h"

#include <fmt/format.h>

#include <filesystem>
#include <fstream>
#include <iterator>

namespace loftmere::test {

namespace fs = std::filesystem;

namespace {

// One write a call, so that calls made side by side do not mix. Arguments end in \037, calls in \036.
constexpr std::string_view recording = R"(#!/bin/bash
HERE='{0}'
words=''
(($# == 0)) || printf -v words '%s\037' "$@"
printf '%s\036' "$words" >>"$HERE/{1}.calls"
{2}
)";

} // namespace

ScriptedTools::ScriptedTools() {
    place_.folder("bin");
    Shell::overrideSearch({.folders = {place_.at("bin")}, .absent = {}});
}

ScriptedTools::~ScriptedTools() {
    Shell::overrideSearch({});
}

std::string ScriptedTools::add(const std::string& name, std::string_view body) {
    const std::string path =
        place_.file("bin/" + name, fmt::format(fmt::runtime(recording), place_.path(), name, body));
    fs::permissions(path, fs::perms::owner_all);
    return path;
}

std::string ScriptedTools::addPrinting(const std::string& name, std::string_view out, int status) {
    place_.file(name + ".out", out);
    return add(name, fmt::format("/bin/cat \"$HERE/{}.out\"; exit {}", name, status));
}

void ScriptedTools::remove(const std::string& name) {
    fs::remove(place_.at("bin/" + name));
    names_.push_back(name);
    Shell::overrideSearch({.folders = {place_.at("bin")}, .absent = names_});
}

std::vector<std::vector<std::string>> ScriptedTools::calls(const std::string& name) const {
    std::ifstream file(place_.at(name + ".calls"), std::ios::binary);
    const std::string text(std::istreambuf_iterator<char>(file), {});
    std::vector<std::vector<std::string>> calls;
    size_t start = 0;
    for (size_t end = 0; (end = text.find('\036', start)) != std::string::npos; start = end + 1) {
        std::vector<std::string>& words = calls.emplace_back();
        for (size_t stop = 0; (stop = text.find('\037', start)) < end; start = stop + 1) {
            words.push_back(text.substr(start, stop - start));
        }
    }
    return calls;
}

} // namespace loftmere::test
