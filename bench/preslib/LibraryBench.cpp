// Loading the shipped library, and building its paths for a colour scheme.

#include "base/File.h"
#include "presentation/S52Model.h"

#include <benchmark/benchmark.h>

namespace {
using kelvox::S52Model;

const std::filesystem::path folder = KELVOX_RESOURCE_DIR;

void readBytes(benchmark::State& state)
{
    for (auto unused : state)
        benchmark::DoNotOptimize(kelvox::readFile(folder / S52Model::libraryName));
}
BENCHMARK(readBytes)->Unit(benchmark::kMillisecond);

void loadLibrary(benchmark::State& state)
{
    for (auto unused : state) {
        const S52Model model({folder, {}});
        benchmark::DoNotOptimize(&model);
    }
}
BENCHMARK(loadLibrary)->Unit(benchmark::kMillisecond);

void buildPaths(benchmark::State& state)
{
    S52Model model({folder, {}});
    for (auto unused : state)
        model.buildSymbolPaths(model.cols().at("DAY").ccie());
}
BENCHMARK(buildPaths)->Unit(benchmark::kMillisecond);
} // namespace

BENCHMARK_MAIN();
