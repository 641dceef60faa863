#include "CleanerCore/Platform/FileContent.h"
#include "CleanerCore/Platform/Removal.h"
#include "CleanerCore/Platform/System.h"
#include "CleanerCore/Platform/posix/Calls.h"
#include "CleanerCore/Platform/posix/RemovalParts.h"
#include "CleanerCore/Support/Date.h"
#include "CleanerCore/Support/PathText.h"

#include <fmt/format.h>

#include <cstdlib>

namespace loftmere {

namespace {

constexpr std::string_view noteEnding = ".trashinfo";

// The freedesktop.org Trash of a home folder. The variable is only about the current user's home.
std::string desktopTrash(const std::string& home) {
    const char* data =
        std::getenv("XDG_DATA_HOME"); // NOLINT(concurrency-mt-unsafe): nothing sets the environment
    if (data != nullptr && data[0] == '/' && home == homeDirectory()) return joinPath(data, "Trash");
    return joinPath(home, ".local/share/Trash");
}

// As in a URL: letters, digits, "/" and a few others stay as they are.
std::string percentEncoded(const std::string& path) {
    constexpr std::string_view plain = "/-_.~";
    std::string text;
    for (const char c : path) {
        const bool isPlain = (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                             plain.find(c) != std::string_view::npos;
        text += isPlain ? std::string(1, c) : fmt::format("%{:02X}", static_cast<unsigned char>(c));
    }
    return text;
}

std::string infoOf(const Place& place) {
    return fmt::format("[Trash Info]\nPath={}\nDeletionDate={}\n", percentEncoded(place.realPath()),
                       DateText::local(currentDate(), "%Y-%m-%dT%H:%M:%S"));
}

// The note reserves the name, so it is made first and never replaces another.
Status writeNote(const Place& note, const std::string& content) {
    const FileDescriptor fd(
        calls::open(note.folder(), note.name().c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, 0600));
    if (!fd) return failed(Failure::posix(errno, "write", note.realPath()));
    const ssize_t put = calls::write(fd.get(), content.data(), content.size());
    if (put == static_cast<ssize_t>(content.size())) return {};
    const int error = put < 0 ? errno : ENOSPC;
    calls::unlink(note.folder(), note.name().c_str(), 0);
    return failed(Failure::posix(error, "write", note.realPath()));
}

Status moveWithNote(const Place& place, const OpenFolder& info, const OpenFolder& files) {
    const std::string content = infoOf(place);
    return underFreeName(place.name(), noteEnding.size(), [&](const std::string& name) -> Status {
        const Place note = info.entry(name + std::string(noteEnding));
        if (auto written = writeNote(note, content); !written) return written;
        auto moved = moveItem(place, files.entry(name));
        if (!moved) calls::unlink(note.folder(), note.name().c_str(), 0);
        return moved;
    });
}

} // namespace

Status moveToOtherTrash(const Place& place, const std::string& home, Failure /*noTrashFolder*/) {
    const std::string trash = desktopTrash(home);
    for (const char* folder : {"info", "files"}) {
        if (auto made = createDirectories(joinPath(trash, folder), 0700); !made) return made;
    }
    auto info = OpenFolder::open(joinPath(trash, "info"));
    if (!info) return failed(std::move(info.error()));
    auto files = OpenFolder::open(joinPath(trash, "files"));
    if (!files) return failed(std::move(files.error()));
    return moveWithNote(place, *info, *files);
}

Status mayMoveToOtherTrash(const Place& place, const std::string& home) {
    const auto files = Place::nearest(joinPath(desktopTrash(home), "files/" + place.name()));
    return files ? mayMoveItem(place, *files) : Status{};
}

} // namespace loftmere
