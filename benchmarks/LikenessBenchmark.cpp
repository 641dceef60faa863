// The grouping of likeness hashes, of as many as are told behind the slash.
#include "CleanerCore/Scanning/Photos/Likeness.h"

#include <benchmark/benchmark.h>

#include <random>

using namespace loftmere;

namespace {

// The hash of a picture with a few soft shapes, whose neighbouring bits go together as in photographs.
uint64_t softHash(std::mt19937_64& random) {
    GreyImage shapes(4, 4);
    for (uint8_t& pixel : shapes.pixels) pixel = uint8_t(random());
    GreyImage image(36, 32);
    for (int y = 0; y < image.height; ++y) {
        for (int x = 0; x < image.width; ++x) {
            const int left = x / 12, top = y / 11, right = x % 12, down = y % 11;
            const int above = shapes.at(left, top) * (12 - right) + shapes.at(left + 1, top) * right;
            const int below = shapes.at(left, top + 1) * (12 - right) + shapes.at(left + 1, top + 1) * right;
            image.at(x, y) = uint8_t((above * (11 - down) + below * down) / 132);
        }
    }
    // Detail of the picture's own decides a few more bits.
    return differenceHash(image) ^ (random() & random() & random());
}

// Bursts of near-equal pictures, single ones, and one picture in twenty of one colour or nearly so.
std::vector<uint64_t> photographs(size_t count) {
    std::mt19937_64 random(1);
    std::vector<uint64_t> hashes;
    while (hashes.size() < count) {
        const uint64_t scene = random() % 20 == 0 ? 0 : softHash(random);
        const uint64_t burst = random() % 4 == 0 ? 1 + random() % 6 : 1;
        for (uint64_t i = 0; i < burst && hashes.size() < count; ++i) {
            hashes.push_back(scene ^
                             (i == 0 ? 0 : uint64_t{1} << (random() % 64) | uint64_t{1} << (random() % 64)));
        }
    }
    return hashes;
}

std::vector<uint64_t> unrelated(size_t count) {
    std::mt19937_64 random(2);
    std::vector<uint64_t> hashes(count);
    for (uint64_t& hash : hashes) hash = random();
    return hashes;
}

// Hardly anything but flat pictures: few bits set, in ever other places.
std::vector<uint64_t> nearlyFlat(size_t count) {
    std::mt19937_64 random(3);
    std::vector<uint64_t> hashes(count);
    for (uint64_t& hash : hashes) hash = random() & random() & random() & random();
    return hashes;
}

// Every fourth bit is never set, and hardly two are alike: one piece cannot tell them apart at all.
std::vector<uint64_t> oneSided(size_t count) {
    std::mt19937_64 random(4);
    std::vector<uint64_t> hashes(count);
    for (uint64_t& hash : hashes) hash = random() & 0x77BBDDEE77BBDDEE;
    return hashes;
}

void group(benchmark::State& state, std::vector<uint64_t> (*make)(size_t)) {
    const auto hashes = make(size_t(state.range(0)));
    size_t groups = 0;
    for (auto _ : state) groups = LikenessGroups::of(hashes).size();
    state.counters["groups"] = double(groups);
}

} // namespace

BENCHMARK_CAPTURE(group, photographs, photographs)
    ->Arg(100'000)
    ->Arg(1'000'000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(group, unrelated, unrelated)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(group, nearlyFlat, nearlyFlat)->Arg(100'000)->Unit(benchmark::kMillisecond);

BENCHMARK_CAPTURE(group, oneSided, oneSided)->Arg(100'000)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
