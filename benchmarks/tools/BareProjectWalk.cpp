// What the kernel alone takes for the folders that the project scan must list: BareProjectWalk ROOT opens,
// reads and closes them on one thread, and does nothing else. Prints how many there were.
#include "CleanerCore/Scanning/Scanners/ProjectArtifacts.h"

#include <dirent.h>
#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace loftmere::ProjectArtifacts;

struct Folder {
    std::string path;
    int depth;
};

bool isListed(std::string_view name) {
    if (name == "." || name == ".." || name.ends_with(".app")) return false;
    return std::ranges::find(kinds, name, &Kind::folder) == kinds.end() &&
           std::ranges::find(neverDescend, name) == neverDescend.end();
}

void readFolder(const Folder& folder, std::vector<char>& buffer, std::vector<Folder>& pending) {
    const int fd = ::open(folder.path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    for (ssize_t end = 0; (end = ::getdents64(fd, buffer.data(), buffer.size())) > 0;) {
        for (ssize_t at = 0; at < end;) {
            const auto* entry = reinterpret_cast<const dirent64*>(buffer.data() + at);
            at += entry->d_reclen;
            if (entry->d_type == DT_DIR && folder.depth <= 6 && isListed(entry->d_name))
                pending.push_back({folder.path + "/" + entry->d_name, folder.depth + 1});
        }
    }
    ::close(fd);
}

} // namespace

int main(int count, char** arguments) {
    if (count != 2) return 2;
    std::vector<char> buffer(32768);
    std::vector<Folder> pending{{arguments[1], 0}};
    int64_t listed = 0;
    for (; !pending.empty(); ++listed) {
        const Folder folder = std::move(pending.back());
        pending.pop_back();
        readFolder(folder, buffer, pending);
    }
    fmt::print("{} folders\n", listed);
}
