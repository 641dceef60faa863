#include "CleanerCore/Platform/posix/TrashFolder.h"

#include "CleanerCore/Platform/Removal.h"
#include "CleanerCore/Support/PathText.h"
#include "CleanerCore/Support/Text.h"

#include <algorithm>
#include <cerrno>
#include <string_view>

namespace loftmere {

namespace {

constexpr int mostTurns = 100000;
constexpr size_t longestName = 255;
constexpr size_t longestExtension = 32; // anything longer is no extension but part of the name

// The name to be tried at the n-th turn, of at most `size` bytes.
std::string numberedName(const std::string& name, int turn, size_t size) {
    if (turn == 1 && name.size() <= size) return name;
    std::string extension = pathExtension(name);
    if (extension.size() > longestExtension) extension.clear();
    const std::string tail =
        (turn == 1 ? "" : " " + std::to_string(turn)) + (extension.empty() ? "" : ".") + extension;
    const size_t stem = name.size() - (extension.empty() ? 0 : extension.size() + 1);
    return std::string(wholeCharacters(name, std::min(stem, size - tail.size()))) + tail;
}

} // namespace

Status underFreeName(const std::string& name, size_t spare,
                     const std::function<Status(const std::string&)>& attempt) {
    for (int turn = 1;; ++turn) {
        Status done = attempt(numberedName(name, turn, longestName - spare));
        const bool isTaken =
            !done && done.error().domain == FailureDomain::posix && done.error().code == EEXIST;
        if (!isTaken || turn == mostTurns) return done;
    }
}

Status moveUnderFreeName(const Place& place, const Place& inTrash) {
    return underFreeName(place.name(), 0,
                         [&](const std::string& name) { return moveItem(place, inTrash.beside(name)); });
}

} // namespace loftmere
