// A log of a million lines: its newest entries beside a bare reading of the same tail, and the sum over all
// of it.
#include "CleanerCore/Platform/RegularFile.h"
#include "CleanerCore/Removal/AuditLog.h"

#include <benchmark/benchmark.h>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <cstdlib>
#include <filesystem>
#include <span>
#include <string>
#include <vector>

using namespace loftmere;
namespace fs = std::filesystem;

namespace {

constexpr int lines = 1000000;
constexpr size_t newest = 300;

std::vector<AuditEntry> someEntries(int from, int count) {
    constexpr const char* actions[] = {"delete", "quarantine", "trash", "skip"};
    std::vector<AuditEntry> entries;
    for (int i = from; i < from + count; ++i) {
        entries.push_back(
            {.id = fmt::format("7F3A9C1E-0B52-4D6A-9F10-{:012X}", i),
             .date = addSeconds(*fromISO8601("2026-01-15T09:30:12Z"), i),
             .action = actions[i % 4],
             .target = fmt::format("/Users/mia/Library/Caches/com.example.{}/Datei-ä-{}", i % 97, i),
             .size = i,
             .category = CleanCategory::userCaches,
             .trigger = i % 3 == 0 ? TriggerSource(ScheduleTrigger{"Weekly"}) : ManualTrigger{},
             .success = true,
             .message = std::nullopt});
    }
    return entries;
}

// Made once, in a folder that goes with the program.
class Log {
public:
    Log() : home_((fs::temp_directory_path() / "auditlog-XXXXXX").string()) {
        if (::mkdtemp(home_.data()) == nullptr) std::abort();
        AuditLog log{paths()};
        for (int i = 0; i < lines; i += 10000) log.append(someEntries(i, 10000));
    }
    ~Log() { fs::remove_all(home_); }
    Log(const Log&) = delete;
    Log& operator=(const Log&) = delete;

    Paths paths() const { return Paths(home_); }
    int64_t size() const { return static_cast<int64_t>(fs::file_size(paths().auditFile())); }

private:
    std::string home_;
};

const Log& theLog() {
    static const Log log;
    return log;
}

void recentEntries(benchmark::State& state) {
    const AuditLog log(theLog().paths());
    for (auto _ : state) benchmark::DoNotOptimize(log.recent(newest));
}

// The same bytes read and parsed in one piece, with no search for where they begin.
void bareTail(benchmark::State& state) {
    const int64_t length = theLog().size() / lines * static_cast<int64_t>(newest);
    for (auto _ : state) {
        const auto file = RegularFile::open(theLog().paths().auditFile());
        std::string tail(static_cast<size_t>(length), '\0');
        benchmark::DoNotOptimize(
            file->read(theLog().size() - length, std::as_writable_bytes(std::span(tail))));
        for (size_t at = tail.find('\n'); at != std::string::npos; at = tail.find('\n', at + 1)) {
            benchmark::DoNotOptimize(
                parseJson(std::string_view(tail).substr(at + 1, tail.find('\n', at + 1) - at - 1)));
        }
    }
}

void lifetimeFreed(benchmark::State& state) {
    const AuditLog log(theLog().paths());
    for (auto _ : state) benchmark::DoNotOptimize(log.lifetimeFreed());
    state.SetBytesProcessed(state.iterations() * theLog().size());
}

} // namespace

BENCHMARK(recentEntries)->Unit(benchmark::kMicrosecond);
BENCHMARK(bareTail)->Unit(benchmark::kMicrosecond);
BENCHMARK(lifetimeFreed)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
