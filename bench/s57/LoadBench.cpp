// Loading a cell into the model, beside GDAL's S57 driver iterating the features of the same file.
// Real cells from KELVOX_DATA where it is set, else the largest demo chart.

#include "demo/DemoCharts.h"
#include "s57/S57CellLoader.h"
#include "support/RealData.h"
#include "support/TemporaryFolder.h"

#include <benchmark/benchmark.h>

#ifdef KELVOX_WITH_GDAL
#include <gdal_priv.h>
#include <ogrsf_frmts.h>
#endif

#include <fstream>
#include <functional>
#include <sys/wait.h>
#include <unistd.h>

namespace {
using namespace kelvox;

std::size_t loadWithKelvox(const std::string& path)
{
    const auto loaded = S57CellLoader::load(path, S57CellLoader::Updates::Leave);
    return loaded ? loaded->cell->s57Features().size() : 0;
}

#ifdef KELVOX_WITH_GDAL
std::size_t iterateWithGdal(const std::string& path)
{
    std::size_t features = 0;
    const GDALDatasetUniquePtr dataset(GDALDataset::Open(path.c_str(), GDAL_OF_VECTOR));
    if (dataset)
        for (auto* layer : dataset->GetLayers())
            for (const auto& feature : *layer)
                features += feature != nullptr;
    return features;
}
#endif

/// Bytes of memory that the process holds and has held at most.
struct Memory {
    double now = 0;
    double peak = 0;
};

Memory memoryOfThisProcess()
{
    Memory memory;
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("VmHWM:"))
            memory.peak = std::stod(line.substr(6)) * 1024;
        else if (line.starts_with("VmRSS:"))
            memory.now = std::stod(line.substr(6)) * 1024;
    }
    return memory;
}

/// How far the work raises the peak of a process of its own.
double peakOf(const std::function<void()>& work)
{
    int pipes[2];
    if (::pipe(pipes) != 0)
        return 0;
    const pid_t child = ::fork();
    if (child == 0) {
        std::ofstream("/proc/self/clear_refs") << "5"; // the peak starts again from here
        const double before = memoryOfThisProcess().now;
        work();
        const double grown = memoryOfThisProcess().peak - before;
        const auto written = ::write(pipes[1], &grown, sizeof grown);
        ::_exit(written == sizeof grown ? 0 : 1);
    }
    double grown = 0;
    ::close(pipes[1]);
    const auto got = ::read(pipes[0], &grown, sizeof grown);
    ::close(pipes[0]);
    ::waitpid(child, nullptr, 0);
    return got == sizeof grown ? grown : 0;
}

void measure(const std::string& name, const std::string& path,
             std::size_t (*load)(const std::string&))
{
    const double peak = peakOf([&] { load(path); });
    benchmark::RegisterBenchmark((name + "/" + std::filesystem::path(path).stem().string()).c_str(),
                                 [=](benchmark::State& state) {
                                     std::size_t features = 0;
                                     for (auto _ : state)
                                         features = load(path);
                                     state.counters["features"] = static_cast<double>(features);
                                     state.counters["peakMB"] = peak / 1e6;
                                 })
        ->Unit(benchmark::kMillisecond);
}
} // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    const TemporaryFolder folder;
    std::vector<std::string> paths;
    for (const char* name :
         {"enc/US2AK5FM/US2AK5FM.000", "enc/US5BOSCC/ENC_ROOT/US5BOSCC/US5BOSCC.000"})
        if (const auto path = realData(name))
            paths.push_back(path->string());
    if (paths.empty() && DemoCharts::write(folder.path(), DemoCharts::largest))
        paths.push_back(
            (folder.path() / (std::string(DemoCharts::updatedChart) + ".000")).string());
#ifdef KELVOX_WITH_GDAL
    GDALAllRegister();
#endif
    for (const auto& path : paths) {
        measure("Kelvox", path, loadWithKelvox);
#ifdef KELVOX_WITH_GDAL
        measure("GDAL", path, iterateWithGdal);
#endif
    }
    benchmark::RunSpecifiedBenchmarks();
}
