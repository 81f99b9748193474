// From a cell's file to its first picture at 1920x1080, and each step of the way. The real cell
// from KELVOX_DATA where it is set, else the largest demo chart.

#include "base/Folders.h"
#include "demo/DemoCharts.h"
#include "painting/ChartPainter.h"
#include "presentation/S52Lookup.h"
#include "s57/S57CellLoader.h"
#include "support/RealData.h"
#include "support/TemporaryFolder.h"

#include <benchmark/benchmark.h>

#include <QGuiApplication>

#include <cstdio>

namespace {
using namespace kelvox;

/// What the program has at hand before a chart is opened.
struct Program {
    WorkerPool pool{std::max(std::thread::hardware_concurrency(), 2U) - 1};
    S52Model library{{folders::applicationResources(), folders::userData()}};
    S52Render presentation{library};
    ChartPainter painter{pool};
    std::filesystem::path path;
};

std::shared_ptr<const CellGeometry> open(const Program& program)
{
    const auto loaded = S57CellLoader::load(program.path);
    return loaded ? std::make_shared<const CellGeometry>(loaded->cell) : nullptr;
}

QImage paint(Program& program, const std::shared_ptr<const CellGeometry>& geometry)
{
    ChartScene scene;
    scene.cells.push_back(geometry);
    scene.portrayal = program.presentation.portrayal();
    const auto frame = ViewFrame::fitting(geometry->cell().bounds(), 1920, 1080, 1, 66);
    return program.painter.paint(scene, frame);
}

void loadModel(benchmark::State& state, Program& program)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(S57CellLoader::load(program.path));
}

void loadAndLayOut(benchmark::State& state, Program& program)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(open(program));
}

void openToFirstPicture(benchmark::State& state, Program& program)
{
    for (auto _ : state) {
        const auto geometry = open(program);
        S52Lookup::setS52Lupts(geometry->cell(), program.library);
        benchmark::DoNotOptimize(paint(program, geometry));
    }
}

void paintAgain(benchmark::State& state, Program& program)
{
    const auto geometry = open(program);
    S52Lookup::setS52Lupts(geometry->cell(), program.library);
    for (auto _ : state)
        benchmark::DoNotOptimize(paint(program, geometry));
}
} // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argc, argv);
    const TemporaryFolder folder;
    Program program;
    program.presentation.setColorTable(1);
    if (program.presentation.portrayal()->colors.empty()) {
        std::fputs("no presentation library beside the program: nothing would be drawn\n", stderr);
        return 1;
    }
    if (const auto real = realData("enc/US2AK5FM/US2AK5FM.000"))
        program.path = *real;
    else if (DemoCharts::write(folder.path(), DemoCharts::largest))
        program.path = folder.path() / (std::string(DemoCharts::updatedChart) + ".000");
    using Step = void (*)(benchmark::State&, Program&);
    constexpr std::pair<const char*, Step> steps[] = {{"Load", loadModel},
                                                      {"LoadAndLayOut", loadAndLayOut},
                                                      {"OpenToFirstPicture", openToFirstPicture},
                                                      {"PaintAgain", paintAgain}};
    for (const auto& [name, step] : steps)
        benchmark::RegisterBenchmark(
            name, [&program, run = step](benchmark::State& state) { run(state, program); })
            ->Unit(benchmark::kMillisecond)
            ->MeasureProcessCPUTime() // of all threads
            ->UseRealTime();
    benchmark::RunSpecifiedBenchmarks();
}
