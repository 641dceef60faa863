#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Platform/TreeWalk.h"

#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>
#include <string>

// The cost of one measurement by the size of what is measured: small folders must not pay for threads.
namespace {

namespace fs = std::filesystem;

// A folder with `folders` subfolders of ten files each, made anew for each benchmark.
class Tree {
public:
    explicit Tree(int64_t folders) : path_(fs::temp_directory_path() / "loftmere-walk-benchmark") {
        fs::remove_all(path_);
        for (int64_t i = 0; i < folders; ++i) {
            const fs::path folder = path_ / std::to_string(i);
            fs::create_directories(folder);
            for (int file = 0; file < 10; ++file) std::ofstream(folder / std::to_string(file)) << 'x';
        }
    }
    ~Tree() { fs::remove_all(path_); }
    Tree(const Tree&) = delete;
    Tree& operator=(const Tree&) = delete;

    std::string path() const { return path_.string(); }

private:
    fs::path path_;
};

void allocatedSize(benchmark::State& state) {
    const Tree tree(state.range(0));
    for (auto _ : state) benchmark::DoNotOptimize(loftmere::FS::allocatedSize(tree.path()));
    state.SetItemsProcessed(state.iterations() * state.range(0) * 11);
}

void walkTree(benchmark::State& state) {
    const Tree tree(state.range(0));
    for (auto _ : state) {
        int64_t entries = 0;
        loftmere::walkTree(tree.path(), [&](const loftmere::WalkEntry&) {
            ++entries;
            return loftmere::WalkStep::proceed;
        });
        benchmark::DoNotOptimize(entries);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0) * 11);
}

} // namespace

BENCHMARK(allocatedSize)->Arg(1)->Arg(10)->Arg(100)->Arg(1000)->UseRealTime();
BENCHMARK(walkTree)->Arg(1)->Arg(10)->Arg(100)->Arg(1000)->UseRealTime();

BENCHMARK_MAIN();
