// A million track points of GPX: read, brought into the models, written; beside them the converter
// that users know, reading the same file in a process of its own.

#include "exchange/GPXExport.h"
#include "exchange/GPXImport.h"
#include "exchange/ModelImport.h"
#include "navigation/Scene.h"
#include "support/TemporaryFolder.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <fstream>
#include <sys/resource.h>

namespace kelvox {

namespace {
constexpr int points = 1'000'000;

struct Discard final : ExchangeTarget {
    std::size_t count = 0;
    std::string waypoint(Waypoint waypoint) override { return waypoint.name; }
    std::string routePoint(Waypoint waypoint) override { return waypoint.name; }
    void endRoute(std::string /*name*/) override { }
    void trackPoint(Track /*point*/) override { ++count; }
    void passedOver() override { }
};

Track pointNumber(int i)
{
    Track point = trackPoint(i, {10 + i * 1e-6, 50 + i * 2e-6});
    point.sog = 6;
    point.cog = 45;
    return point;
}

void write(const std::filesystem::path& path)
{
    TextOutput out(path);
    GPXWriter writer(out);
    writer.writeHeader();
    writer.beginTrack("bench");
    for (int i = 0; i < points; ++i)
        writer.writeTrack(pointNumber(i), i == 0);
    writer.endTrack();
    writer.writeFooter();
    if (!out.finish())
        std::abort();
}

const std::filesystem::path& file()
{
    static const TemporaryFolder folder;
    static const auto path = [] {
        auto made = folder.path() / "million.gpx";
        write(made);
        return made;
    }();
    return path;
}

/// The most that the process has held so far, in MB.
double peakMB()
{
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss) / 1024;
}

void readMillion(benchmark::State& state)
{
    (void)file();
    const double before = peakMB();
    for (auto _ : state) {
        Discard target;
        if (!GPXImport({}).import(file(), target) || target.count != points)
            state.SkipWithError("not read");
    }
    state.counters["peakGrowthMB"] = peakMB() - before;
}

void importMillion(benchmark::State& state)
{
    (void)file();
    const double before = peakMB();
    for (auto _ : state) {
        Scene scene;
        ModelImport target(scene.waypoints, scene.routes, scene.tracks);
        if (!GPXImport({}).import(file(), target))
            state.SkipWithError("not read");
        target.finish();
        if (scene.tracks.count() != TracksModel::mostPoints)
            state.SkipWithError("not kept");
    }
    state.counters["peakGrowthMB"] = peakMB() - before;
}

void writeMillion(benchmark::State& state)
{
    const TemporaryFolder folder;
    for (auto _ : state)
        write(folder.path() / "out.gpx");
}

void gpsbabelMillion(benchmark::State& state)
{
    const std::string command = "gpsbabel -t -i gpx -f " + file().string() + " 2>/dev/null";
    for (auto _ : state)
        if (std::system(command.c_str()) != 0)
            state.SkipWithError("gpsbabel is not installed");
}

BENCHMARK(readMillion)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(importMillion)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(gpsbabelMillion)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(writeMillion)->Unit(benchmark::kMillisecond)->UseRealTime();
} // namespace

} // namespace kelvox

BENCHMARK_MAIN();
