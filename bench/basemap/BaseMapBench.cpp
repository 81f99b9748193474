// The installed shorelines: loading them, and what a picture of 1920x1080 needs from them at the
// scales between a harbour and the world.

#include "basemap/BaseMapRender.h"
#include "presentation/DisplayList.h"

#include <benchmark/benchmark.h>

#include <cstdio>

namespace {
using namespace kelvox;

void load(benchmark::State& state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(BaseMap::load());
    if (const auto map = BaseMap::load()) {
        state.counters["points"] = static_cast<double>(map->vertexCount());
        state.counters["bytes"] = static_cast<double>(map->bytes());
    }
}

void draw(benchmark::State& state, const BaseMap& map)
{
    // The Kattegat, with many islands.
    const auto frame = ViewFrame::at(Position{11.5, 57.6}, static_cast<int>(state.range(0)), 20,
                                     1920, 1080, 1, 66);
    for (auto _ : state) {
        DisplayList list(1);
        drawBaseMap(map, frame, {}, list);
        benchmark::DoNotOptimize(list.size());
    }
}
} // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    const auto map = BaseMap::load();
    if (!map) {
        std::fprintf(stderr, "%s\n", map.error().message.c_str());
        return 1;
    }
    benchmark::RegisterBenchmark("Load", load)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("Draw", [&](benchmark::State& state) { draw(state, *map); })
        ->Unit(benchmark::kMillisecond)
        ->Arg(5'000)
        ->Arg(100'000)
        ->Arg(1'000'000)
        ->Arg(10'000'000)
        ->Arg(50'000'000);
    benchmark::RunSpecifiedBenchmarks();
}
