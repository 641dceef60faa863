// The preview of a clean: 27,000 items in 300 folders, a third of them each for quarantine, the Trash and
// deletion.
#include "CleanerCore/Platform/FileStatus.h"
#include "CleanerCore/Removal/Cleaning/Cleaner.h"

#include <benchmark/benchmark.h>
#include <fmt/format.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

using namespace loftmere;
namespace fs = std::filesystem;

namespace {

constexpr int folders = 300;
constexpr int filesOfEach = 90;

// Made once, and gone with the program.
class Home {
public:
    Home() : path((fs::temp_directory_path() / "loftmere-XXXXXX").string()) {
        if (::mkdtemp(path.data()) == nullptr) std::abort();
        fs::create_directories(path + "/.Trash");
        fs::create_directories(Paths(path).quarantineDir());
        constexpr CleanCategory categories[] = {CleanCategory::oldDownloads, CleanCategory::installers,
                                                CleanCategory::userCaches};
        for (int file = 0; file < filesOfEach; ++file) {
            for (int folder = 0; folder < folders; ++folder) add(folder, file, categories[file % 3]);
        }
    }
    ~Home() { fs::remove_all(path); }
    Home(const Home&) = delete;
    Home& operator=(const Home&) = delete;

    std::string path;
    std::vector<ScanItem> items; // those of one folder far from each other, as after a sort by size
    const AppConfig config{.disposalOverrides = {{"oldDownloads", Disposal::quarantine},
                                                 {"installers", Disposal::trash},
                                                 {"userCaches", Disposal::remove}}};

private:
    void add(int folder, int file, CleanCategory category) {
        const std::string place =
            fmt::format("{}/Library/Caches/group {}/folder {}", path, folder / 20, folder);
        fs::create_directories(place);
        const std::string name = fmt::format("{}/file {}", place, file);
        std::ofstream(name) << "x";
        items.push_back(ScanItem::make({.target = PathTarget{name}, .size = 1, .category = category}));
    }
};

const Home& home() {
    static const Home made;
    return made;
}

void perItem(benchmark::State& state) {
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * home().items.size()));
}

void preview(benchmark::State& state) {
    (void)home(); // made before the clock runs
    for (auto _ : state) {
        const Cleaner cleaner(Paths(home().path), home().config);
        benchmark::DoNotOptimize(cleaner.plan(home().items, ManualTrigger{}).report());
    }
    perItem(state);
}

// The least that can be asked of the system about each item.
void bareStatus(benchmark::State& state) {
    (void)home();
    for (auto _ : state) {
        for (const ScanItem& item : home().items) benchmark::DoNotOptimize(linkStatus(*item.path()));
    }
    perItem(state);
}

} // namespace

BENCHMARK(preview)->Unit(benchmark::kMillisecond);
BENCHMARK(bareStatus)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
