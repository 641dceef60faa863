#include "CleanerCore/Removal/Quarantine/QuarantineJournal.h"

#include "CleanerCore/Platform/FileContent.h"

#include <nlohmann/json.hpp>

#include <cerrno>
#include <string_view>

namespace loftmere {

namespace {

constexpr const char* restoringKey = "restoring";

void takeIn(QuarantineJournal& journal, std::string_view line) {
    const auto json = parseJson(line);
    if (!json) return;
    if (json->is_object() && json->contains(restoringKey)) {
        if (auto name = JsonCodec<std::string>::decode((*json)[restoringKey]))
            journal.restoring.insert(*name);
    } else if (auto entry = JsonCodec<QuarantineEntry>::decode(*json)) {
        journal.arriving.push_back(std::move(*entry));
    }
}

Status writeDown(AppendFile& file, const std::string& lines) {
    if (auto appended = file.append(lines); !appended) return appended;
    return file.sync();
}

} // namespace

Result<QuarantineJournal> QuarantineJournal::read(const std::string& path) {
    QuarantineJournal journal;
    const auto text = readFile(path);
    if (!text && text.error().code == ENOENT) return journal;
    if (!text) return failed(text.error());
    std::string_view rest = *text;
    while (!rest.empty()) {
        const size_t end = std::min(rest.find('\n'), rest.size());
        takeIn(journal, rest.substr(0, end));
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return journal;
}

Status QuarantineJournal::announceArriving(AppendFile& file, std::span<const QuarantineEntry> entries) {
    std::string lines;
    for (const QuarantineEntry& entry : entries) {
        auto line = writeJson(JsonCodec<QuarantineEntry>::encode(entry), JsonStyle::compact);
        if (!line) return failed(std::move(line.error()));
        lines += *line + "\n";
    }
    return writeDown(file, lines);
}

Status QuarantineJournal::announceRestoring(AppendFile& file,
                                            std::span<const QuarantineEntry* const> entries) {
    std::string lines;
    for (const QuarantineEntry* entry : entries) {
        auto line = writeJson({{restoringKey, entry->storedName}}, JsonStyle::compact);
        if (!line) return failed(std::move(line.error()));
        lines += *line + "\n";
    }
    return writeDown(file, lines);
}

} // namespace loftmere
