// Prints what dHash answers for the files of a folder, hash, pixel count and path,
// decoding as the scanner does: the largest files first, on two threads.
#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Platform/FileStatus.h"
#include "CleanerCore/Scanning/Photos/Likeness.h"
#include "CleanerCore/Support/Crew.h"

#include <fmt/format.h>

#include <algorithm>

using namespace loftmere;

int main(int count, char** arguments) {
    if (count != 2) return 2;
    std::vector<std::string> paths = FS::children(arguments[1]);
    std::ranges::sort(paths);
    std::ranges::stable_sort(paths, std::ranges::greater{}, [](const std::string& path) {
        const auto status = linkStatus(path);
        return status ? status->size : 0;
    });
    std::vector<std::optional<Likeness>> likenesses(paths.size());
    concurrentPerform(paths.size(), 2, [&](size_t i) { likenesses[i] = dHash(paths[i]); });
    for (size_t i = 0; i < paths.size(); ++i) {
        if (likenesses[i])
            fmt::print("{:016x} {} {}\n", likenesses[i]->hash, likenesses[i]->pixelCount, paths[i]);
    }
}
