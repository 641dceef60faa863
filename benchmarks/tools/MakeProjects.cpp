// Makes a home full of code: MakeProjects HOME FOLDERS. Projects of 200 folders each below HOME/Projects, all
// worked on today, with an artifact each that is not to be looked into. The same arguments give the same
// tree.
#include <fmt/format.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace fs = std::filesystem;

namespace {

constexpr int foldersEach = 200;
constexpr int filesEach = 4;

void makeFiles(const fs::path& folder, int count) {
    for (int i = 0; i < count; ++i) std::ofstream(folder / fmt::format("source-{}.cpp", i)) << "text\n";
}

// Five modules with a few folders two levels deep in each.
void makeProject(const fs::path& project, const char* marker, const char* artifact) {
    fs::create_directories(project / artifact / "below");
    std::ofstream(project / marker) << "{}\n";
    for (int i = 0; i < foldersEach; ++i) {
        const fs::path folder = project / fmt::format("module-{}", i % 5) /
                                fmt::format("part-{}", i / 5 % 8) / fmt::format("detail-{}", i / 40);
        fs::create_directories(folder);
        makeFiles(folder, filesEach);
    }
}

} // namespace

int main(int count, char** arguments) try {
    if (count != 3) return 2;
    for (int i = 0; i < std::atoi(arguments[2]) / foldersEach; ++i) {
        const fs::path project =
            fs::path(arguments[1]) / "Projects" / fmt::format("team-{}/project-{}", i % 20, i);
        makeProject(project, i % 2 == 0 ? "package.json" : "Cargo.toml",
                    i % 2 == 0 ? "node_modules" : "target");
    }
    return 0;
} catch (const std::exception& error) {
    fmt::print(stderr, "MakeProjects: {}\n", error.what());
    return 1;
}
