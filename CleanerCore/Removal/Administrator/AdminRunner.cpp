#include "CleanerCore/Removal/Administrator/AdminRunner.h"

#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Support/Text.h"

#include <fmt/format.h>

#include <string_view>

namespace loftmere::AdminRunner {

namespace {

struct Explanation {
    std::string_view sign; // in the lower-cased output
    std::string_view sentence;
};

constexpr std::string_view cancelled = "You cancelled the password prompt";
constexpr std::string_view inUse = "File is in use — quit the app and retry";

// The first row whose sign is there decides.
constexpr Explanation explanations[] = {
    {"user canceled", cancelled},
    {"user cancelled", cancelled},
    {"-128", cancelled},
    {"operation not permitted",
     "macOS blocks this path (System Integrity Protection or Full Disk Access missing)"},
    {"resource busy", inUse},
    {"in use", inUse},
    {"read-only", "Read-only volume"},
};

std::string firstCharacters(const std::string& text, size_t count) {
    size_t end = 0;
    for (; end < text.size(); ++end) {
        const bool startsCharacter = (static_cast<unsigned char>(text[end]) & 0xC0) != 0x80;
        if (startsCharacter && count-- == 0) break;
    }
    return text.substr(0, end);
}

} // namespace

Shell::Result remove(const std::vector<std::string>& paths, PrivilegedSession& session) {
    if (paths.empty()) return {};
    for (const std::string& path : paths) {
        // A daemon that keeps running would hold or write again what is about to go. Whether it ran at all
        // does not matter.
        if (path.starts_with("/Library/LaunchDaemons/") && path.ends_with(".plist")) {
            session.run(PrivilegedSession::Bootout{path});
        }
    }
    return session.run(PrivilegedSession::Remove{paths});
}

bool isGone(const std::string& path, const Shell::Result& result) {
    return result.ok() ? !FS::exists(path) : !FS::isReachable(path);
}

std::string explain(const Shell::Result& result, const std::string& path) {
    const std::string told = asciiLowercased(result.err + result.out);
    for (const Explanation& row : explanations) {
        if (told.find(row.sign) != std::string::npos) return std::string(row.sentence);
    }
    if (result.err.empty()) return fmt::format("Still present after removal ({})", path);
    return firstCharacters(result.err, 160);
}

Shell::Result oneShot(const std::string& command, const std::string& purpose, const AdminPrompt& prompt) {
    constexpr double limit = 300;
    return prompt(command, "Ostrel Loftmere: " + purpose, limit);
}

} // namespace loftmere::AdminRunner
