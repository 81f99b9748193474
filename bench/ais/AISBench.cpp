// Decoding, and what a full table costs the chart and the list.

#include "CountedAllocations.h"
#include "Traffic.h"
#include "ais/AISPicture.h"
#include "ais/AISStation.h"

#include <benchmark/benchmark.h>

#include <cmath>

namespace kelvox {
namespace {

constexpr std::size_t fleet = 5000;

struct Loaded {
    AISStation station;
    std::vector<std::string> lines;

    explicit Loaded(std::size_t vessels)
    {
        Traffic traffic(vessels);
        for (std::size_t i = 0; i < vessels; ++i)
            station.controller.processRawSentence(traffic.name(i));
        for (int round = 0; round < 2; ++round)
            for (std::size_t i = 0; i < vessels; ++i)
                lines.push_back(traffic.next(i));
        for (const auto& line : lines)
            station.controller.processRawSentence(line);
        station.controller.plotPosition({.longitude = 0, .latitude = 50});
        station.idle.run();
    }
};

AISView view()
{
    constexpr double pointsPerDegree = 900;
    return {.pointAt =
                [](Position p) {
                    return Point{p.longitude * pointsPerDegree,
                                 std::log(std::tan((90 + p.latitude) * 0.00872664626))
                                     * pointsPerDegree * 57.29577951};
                },
            .pointsPerMetre = [](double) { return pointsPerDegree / 111'120; },
            .rotation = 30,
            .visible = {-1e6, -1e6, 1e6, 1e6}};
}

/// From the raw line to the table, one line at a time as from a port, or 64 as from a socket.
void BM_PositionReports(benchmark::State& state)
{
    Loaded loaded(static_cast<std::size_t>(state.range(0)));
    const auto batch = static_cast<std::size_t>(state.range(1));
    const std::vector<std::string_view> lines(loaded.lines.begin(), loaded.lines.end());
    std::size_t at = 0;
    const auto read = [&] {
        loaded.station.controller.processLines(
            std::span(lines).subspan(at, std::min(batch, lines.size() - at)));
        at += batch;
        if (at >= lines.size())
            at = 0;
    };
    for (std::size_t i = 0; i < 2 * lines.size(); ++i) // buffers have grown to their size
        read();
    long long allocations = -allocationCount;
    for (auto _ : state)
        read();
    allocations += allocationCount;
    const auto messages = static_cast<double>(state.iterations() * state.range(1));
    state.counters["messages/s"] = benchmark::Counter(messages, benchmark::Counter::kIsRate);
    state.counters["allocations/message"] = static_cast<double>(allocations) / messages;
}
BENCHMARK(BM_PositionReports)
    ->ArgNames({"targets", "lines"})
    ->Args({50, 1})
    ->Args({fleet, 1})
    ->Args({50, 64})
    ->Args({fleet, 64});

/// The decoder alone: fragments to report.
void BM_DecodeOnly(benchmark::State& state)
{
    AISAssembly assembly;
    const std::string payload = "13HOI:0P0000VOHLCnHQKwvL05Ip";
    for (auto _ : state) {
        assembly.add({"1", "1", "", "A", payload, "0"});
        benchmark::DoNotOptimize(decodeAISReport(assembly.bits()));
    }
}
BENCHMARK(BM_DecodeOnly);

void BM_PlotPosition(benchmark::State& state)
{
    Loaded loaded(fleet);
    for (auto _ : state)
        loaded.station.controller.plotPosition({.longitude = 0, .latitude = 50});
}
BENCHMARK(BM_PlotPosition)->Unit(benchmark::kMillisecond);

void BM_ReloadList(benchmark::State& state)
{
    Loaded loaded(fleet);
    auto& list = loaded.station.controller.list();
    list.sortBy(static_cast<AISTargetList::Column>(state.range(0)),
                AISTargetList::Order::Ascending);
    for (auto _ : state)
        list.reload();
}
BENCHMARK(BM_ReloadList)
    ->ArgName("column")
    ->Arg(static_cast<int>(AISTargetList::Column::Name))
    ->Arg(static_cast<int>(AISTargetList::Column::Distance))
    ->Unit(benchmark::kMillisecond);

/// Shapes of all targets, or of the tenth of them that is in the view.
void BM_Picture(benchmark::State& state)
{
    Loaded loaded(fleet);
    auto chart = view();
    if (state.range(0) != fleet)
        chart.visible = {-100, chart.pointAt({0, 49.9}).y, 100, chart.pointAt({0, 50.35}).y};
    AISPicture picture;
    const auto update = [&] {
        picture.update(loaded.station.model, chart, {}, loaded.station.clock.now());
    };
    update();
    long long allocations = -allocationCount;
    for (auto _ : state)
        update();
    allocations += allocationCount;
    state.counters["drawn"] = static_cast<double>(picture.symbols().size());
    state.counters["allocations"] =
        static_cast<double>(allocations) / static_cast<double>(state.iterations());
}
BENCHMARK(BM_Picture)
    ->ArgName("targets")
    ->Arg(fleet)
    ->Arg(fleet / 10)
    ->Unit(benchmark::kMillisecond);

void BM_TargetAt(benchmark::State& state)
{
    Loaded loaded(fleet);
    AISPicture picture;
    picture.update(loaded.station.model, view(), {}, loaded.station.clock.now());
    double x = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(picture.targetAt({x += 0.01, 52'000}, 5));
}
BENCHMARK(BM_TargetAt)->Unit(benchmark::kMicrosecond);

} // namespace
} // namespace kelvox

BENCHMARK_MAIN();
