// A folder of many charts: from naming it to the first charts in memory and to a whole index, with
// and without an index from before; reading what the index wants of a cell beside loading it; and
// choosing the charts of a view. KELVOX_BENCH_CHARTS names a folder to take instead of 1,000 demo
// cells, which take a minute to write.

#include "demo/DemoCharts.h"
#include "library/ChartLibrary.h"
#include "s57/S57CellLoader.h"
#include "s57/S57CellSummary.h"
#include "support/MainLoop.h"
#include "support/RealData.h"
#include "support/TemporaryFolder.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdio>
#include <fstream>
#include <malloc.h>

namespace {
using namespace kelvox;

/// The view that the program comes up with: a harbour of the demo waters, or the folder's middle.
ChartArea viewIn(const Rect& bounds)
{
    const Point middle = bounds.center();
    return {{middle.x - 0.05, middle.y - 0.03, middle.x + 0.05, middle.y + 0.03}, 25'000};
}

struct Run {
    explicit Run(const std::filesystem::path& index)
    {
        ChartLibrary::Options options;
        options.index = index;
        options.scanThreads = 2;
        ChartLibrary::Events events;
        events.scanned = [this](const ScanReport& scan) {
            report = scan;
            isScanned = true;
        };
        events.shownChanged = [this] { isShown = !library->shown().cells.empty(); };
        library = std::make_unique<ChartLibrary>(main, options, events);
    }
    MainLoop main;
    ScanReport report;
    bool isScanned = false;
    bool isShown = false;
    std::unique_ptr<ChartLibrary> library;
};

enum class Index { Cold, Warm };
enum class Until { FirstChart, WholeIndex };

void open(benchmark::State& state, const std::filesystem::path& charts, const ChartArea& view,
          Index kind, Until until)
{
    const TemporaryFolder folder;
    const auto index = folder.path() / "charts.sqlite";
    if (kind == Index::Warm) {
        Run first(index);
        first.library->setPlaces({charts});
        first.main.runUntil([&] { return first.isScanned; });
    }
    for (auto _ : state) {
        if (kind == Index::Cold) {
            state.PauseTiming();
            std::filesystem::remove(index);
            state.ResumeTiming();
        }
        Run run(index);
        run.library->setView(view);
        run.library->setPlaces({charts});
        run.main.runUntil([&] { return until == Until::FirstChart ? run.isShown : run.isScanned; });
        state.PauseTiming();
        run.main.runUntil([&] { return run.isScanned; });
        state.counters["found"] = static_cast<double>(run.report.found);
        state.counters["read"] = static_cast<double>(run.report.read);
        run.library.reset();
        state.ResumeTiming();
    }
}

void select(benchmark::State& state, const ChartRecords& charts, const ChartArea& view)
{
    ChartSelection selection;
    double step = 0;
    for (auto _ : state) {
        ChartArea moved = view;
        step = std::fmod(step + 0.001, 0.05);
        moved.bounds.left += step;
        moved.bounds.right += step;
        selection.update(charts, moved, ChartChoice::Both);
    }
    state.counters["selected"] = static_cast<double>(selection.cells().size());
}

void summarise(benchmark::State& state, const std::filesystem::path& cell)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(S57CellSummary::read(cell));
    state.SetBytesProcessed(static_cast<std::int64_t>(std::filesystem::file_size(cell))
                            * state.iterations());
}

void load(benchmark::State& state, const std::filesystem::path& cell)
{
    std::size_t bytes = 0;
    for (auto _ : state) {
        const std::size_t before = mallinfo2().uordblks + mallinfo2().hblkhd;
        const auto loaded = S57CellLoader::load(cell);
        const CellGeometry geometry(loaded->cell);
        bytes = mallinfo2().uordblks + mallinfo2().hblkhd - before;
        benchmark::DoNotOptimize(geometry.vertexCount());
    }
    state.counters["memoryPerFileByte"] =
        static_cast<double>(bytes) / static_cast<double>(std::filesystem::file_size(cell));
}
} // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    const TemporaryFolder folder;
    std::filesystem::path charts = folder.path();
    if (const char* given = std::getenv("KELVOX_BENCH_CHARTS"))
        charts = given;
    else if (!DemoCharts::writeGrid(charts, 1'000))
        return 1;

    Run run({});
    run.library->setPlaces({charts});
    run.main.runUntil([&] { return run.isScanned; });
    const ChartRecords known = ChartSelection::usable(run.library->charts());
    if (known.empty()) {
        std::fputs("no charts\n", stderr);
        return 1;
    }
    const ChartArea near = viewIn(run.library->bounds());
    const ChartArea whole{run.library->bounds(), 2'000'000};

    const auto add = [](const char* name, const auto& work) {
        return benchmark::RegisterBenchmark(name, work)
            ->Unit(benchmark::kMillisecond)
            ->UseRealTime();
    };
    const std::tuple<const char*, Index, Until> openings[] = {
        {"Open/cold/firstChart", Index::Cold, Until::FirstChart},
        {"Open/cold/wholeIndex", Index::Cold, Until::WholeIndex},
        {"Open/warm/firstChart", Index::Warm, Until::FirstChart},
        {"Open/warm/wholeIndex", Index::Warm, Until::WholeIndex}};
    for (const auto& [name, kind, until] : openings)
        add(name, [&, kind = kind, until = until](benchmark::State& state) {
            open(state, charts, near, kind, until);
        })->Iterations(5);
    add("Select/harbour", [&](benchmark::State& state) { select(state, known, near); });
    add("Select/whole", [&](benchmark::State& state) { select(state, known, whole); });
    std::vector<std::filesystem::path> cells{known.front()->path};
    if (const auto real = realData("enc")) {
        std::vector<Error> problems;
        for (const auto& path : S57CellLoader::findCells({*real}, problems))
            if (S57CellLoader::load(path))
                cells.push_back(path);
    }
    for (const auto& cell : cells) {
        add(("Summary/" + cell.stem().string()).c_str(),
            [cell](benchmark::State& state) { summarise(state, cell); });
        add(("Load/" + cell.stem().string()).c_str(),
            [cell](benchmark::State& state) { load(state, cell); });
    }
    benchmark::RunSpecifiedBenchmarks();
}
