// Makes a tree that looks like the caches of a home: MakeTree ROOT FOLDERS FILES. The same arguments give the
// same tree.
#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

constexpr int subfoldersEach = 6;

// From none to twice the average, so that some folders are empty and others full.
int filesIn(int folder, int folders, int files) {
    const int average = files / folders;
    return average + (folder * 7919 % (2 * average + 1)) - average;
}

bool makeFile(const std::string& path, int number) {
    const int fd = ::open(path.c_str(), O_CREAT | O_WRONLY | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0) return false;
    const std::string content(static_cast<size_t>(number % 2 == 0 ? number % 9000 : 0), 'x');
    const bool isWritten =
        ::write(fd, content.data(), content.size()) == static_cast<ssize_t>(content.size());
    return ::close(fd) == 0 && isWritten;
}

bool makeTree(const std::string& root, int folders, int files) {
    std::vector<std::string> paths{root};
    int made = 0;
    for (int i = 0; i < folders; ++i) {
        if (i > 0)
            paths.push_back(
                fmt::format("{}/com.example.{}", paths[static_cast<size_t>((i - 1) / subfoldersEach)], i));
        if (::mkdir(paths.back().c_str(), 0755) != 0) return false;
        const int wanted = i + 1 == folders ? files - made : filesIn(i, folders, files);
        for (int last = made + wanted; made < last; ++made) {
            if (!makeFile(fmt::format("{}/{:08x}.cache", paths.back(), made * 2654435761U), made))
                return false;
        }
    }
    return true;
}

} // namespace

int main(int count, char** arguments) {
    if (count != 4) return 2;
    if (makeTree(arguments[1], std::atoi(arguments[2]), std::atoi(arguments[3]))) return 0;
    std::perror("MakeTree");
    return 1;
}
