// Moves many single files to quarantine and back. The time per item must stay the same however many there
// are. TMPDIR says on which file system.
#include "CleanerCore/Removal/Quarantine/Quarantine.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

using namespace loftmere;
namespace fs = std::filesystem;

namespace {

class Home {
public:
    Home() {
        std::string place = (fs::temp_directory_path() / "quarantine-XXXXXX").string();
        if (::mkdtemp(place.data()) == nullptr) std::abort();
        path = place;
    }
    ~Home() {
        std::error_code ignored;
        fs::remove_all(path, ignored);
    }
    Home(const Home&) = delete;
    Home& operator=(const Home&) = delete;

    std::string path;
};

std::vector<ForeseenItem> makeFiles(const std::string& home, int64_t count) {
    std::vector<ForeseenItem> items;
    for (int64_t i = 0; i < count; ++i) {
        const std::string folder = home + "/Downloads/" + std::to_string(i / 100);
        if (i % 100 == 0) fs::create_directories(folder);
        items.push_back({folder + "/report-" + std::to_string(i) + ".pdf", 1, CleanCategory::oldDownloads});
        std::ofstream(items.back().originalPath) << i;
    }
    return items;
}

double secondsOf(const std::function<bool()>& operation, benchmark::State& state) {
    const auto start = std::chrono::steady_clock::now();
    if (!operation()) state.SkipWithError("an item failed");
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

bool addAll(Quarantine& quarantine, QuarantineSession& session, const RemovalPermit& permit,
            const std::vector<ForeseenItem>& items, bool foresee) {
    if (foresee) quarantine.foresee(session, items);
    for (const ForeseenItem& item : items) {
        const auto cleared = permit.judge(item.originalPath).item;
        if (!cleared || !quarantine.add(*cleared, item.size, item.category, session)) return false;
    }
    return quarantine.finish(session).has_value();
}

void thereAndBack(benchmark::State& state) {
    const int64_t count = state.range(0);
    const bool foresee = state.range(1) != 0;
    double there = 0;
    double back = 0;
    for (auto _ : state) {
        state.PauseTiming();
        const Home home;
        const auto items = makeFiles(home.path, count);
        Quarantine quarantine{Paths(home.path)};
        const auto permit = RemovalPermit::ask(Paths(home.path), {});
        auto session = quarantine.beginSession(ManualTrigger{}, 7, currentDate());
        state.ResumeTiming();
        there += secondsOf([&] { return addAll(quarantine, *session, *permit, items, foresee); }, state);
        back += secondsOf(
            [&] {
                const auto restored = quarantine.restore(session->id, std::nullopt);
                return restored && restored->failures.empty();
            },
            state);
    }
    const auto items = static_cast<double>(count) * static_cast<double>(state.iterations());
    state.counters["there_us_per_item"] = there / items * 1e6;
    state.counters["back_us_per_item"] = back / items * 1e6;
}

} // namespace

BENCHMARK(thereAndBack)
    ->ArgNames({"items", "foreseen"})
    ->Args({1000, 1})
    ->Args({10000, 1})
    ->Args({100000, 1})
    ->Args({1000, 0})
    ->Args({10000, 0})
    ->Iterations(1)
    ->Repetitions(3)
    ->ReportAggregatesOnly()
    ->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
