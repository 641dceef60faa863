#include "CleanerCore/Safety/SafetyPolicy.h"
#include "CleanerCore/Scanning/ScanEngine.h"

#include <benchmark/benchmark.h>
#include <fmt/format.h>

#include <cstdlib>
#include <filesystem>

using namespace loftmere;

namespace {

// A home with one deep folder, for as long as the program runs.
class Home {
public:
    Home() {
        std::string place = (std::filesystem::temp_directory_path() / "loftmere-XXXXXX").string();
        if (::mkdtemp(place.data()) == nullptr) std::abort();
        path = place;
        deep = path + "/Library/Caches/one/two/three/four/five/six/seven/eight";
        std::filesystem::create_directories(deep);
    }
    ~Home() { std::filesystem::remove_all(path); }

    std::string path;
    std::string deep;
};

const Home& home() {
    static const Home made;
    return made;
}

std::vector<std::string> pathsBelowOneFolder(int64_t count) {
    std::vector<std::string> paths;
    for (int64_t i = 0; i < count; ++i) paths.push_back(fmt::format("{}/file {}", home().deep, i));
    return paths;
}

SafetyPolicy policy() {
    return SafetyPolicy(Paths(home().path), {"~/Work", "~/Photos", "/srv/data"});
}

void perPath(benchmark::State& state, int64_t paths) {
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * paths);
}

void policyBatch(benchmark::State& state) {
    const SafetyPolicy judge = policy();
    const auto paths = pathsBelowOneFolder(state.range(0));
    for (auto _ : state) {
        SafetyPolicy::Batch batch(judge);
        for (const std::string& path : paths) benchmark::DoNotOptimize(batch.check(path));
    }
    perPath(state, state.range(0));
}

// As before acting: every link looked at anew.
void policyAnew(benchmark::State& state) {
    const SafetyPolicy judge = policy();
    const auto paths = pathsBelowOneFolder(state.range(0));
    for (auto _ : state) {
        for (const std::string& path : paths) benchmark::DoNotOptimize(judge.check(path));
    }
    perPath(state, state.range(0));
}

// The least that can be asked of the system about each path.
void systemRealpath(benchmark::State& state) {
    const auto paths = pathsBelowOneFolder(state.range(0));
    for (auto _ : state) {
        for (size_t i = 0; i < paths.size(); ++i) {
            char* real = ::realpath(home().deep.c_str(), nullptr);
            benchmark::DoNotOptimize(real);
            std::free(real);
        }
    }
    perPath(state, state.range(0));
}

// Findings of every category, a tenth of them found twice, in many folders.
std::vector<CategoryResult> findings(int64_t count) {
    std::vector<CategoryResult> results;
    for (const CategoryTraits& row : tableOf<CleanCategory>) results.push_back({.category = row.value});
    for (int64_t i = 0; i < count; ++i) {
        const int64_t number = i % 10 == 0 ? i / 2 : i;
        const std::string path = fmt::format("{}/folder {}/file {}", home().deep, number / 50, number);
        CategoryResult& result = results[static_cast<size_t>(i) % results.size()];
        result.items.push_back(ScanItem::make({.target = PathTarget{path},
                                               .size = i * 7919 % 100003,
                                               .category = result.category,
                                               .reason = ""}));
    }
    return results;
}

void reconcile(benchmark::State& state) {
    const SafetyPolicy judge = policy();
    const auto found = findings(state.range(0));
    for (auto _ : state) {
        state.PauseTiming();
        auto results = found;
        state.ResumeTiming();
        results = ScanEngine::dedupe(std::move(results), judge);
        benchmark::DoNotOptimize(results);
        state.PauseTiming();
        results.clear();
        state.ResumeTiming();
    }
    perPath(state, state.range(0));
}

} // namespace

BENCHMARK(policyBatch)->Arg(1000)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(policyAnew)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(systemRealpath)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(reconcile)->Arg(10000)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
