// Decoding and drawing a chart of 20,000 x 20,000 pixels.

#include "raster/KapWriter.h"
#include "raster/RasterRenderer.h"
#include "support/TemporaryFolder.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <unistd.h>

namespace kelvox {
namespace {

constexpr int side = 20'000;

/// A big chart in a folder of its own, as busy as a printed one: about 600 runs a row.
class BigChart {
public:
    BigChart()
        : m_path(m_folder.path() / "big.kap")
    {
        KapDescription description;
        description.width = description.height = side;
        description.colors = {{},
                              {0, 0, 0},
                              {255, 255, 255},
                              {244, 232, 193},
                              {209, 219, 240},
                              {197, 69, 139},
                              {120, 120, 120}};
        description.referencePoints = {
            {0, 0, 60, 20}, {side - 1, 0, 60, 22}, {0, side - 1, 59, 20}};
        std::ofstream(m_path, std::ios::binary)
            << writeKap(description, [](int row, std::span<std::uint8_t> colors) {
                   for (std::size_t x = 0; x < colors.size(); ++x) {
                       const auto line = (x * 3 + static_cast<std::size_t>(row)) % 97;
                       const bool land =
                           std::sin(static_cast<double>(x) * 2e-3) + std::cos(row * 3e-3) > 0.4;
                       colors[x] = line < 3 ? 1 : line < 5 ? 6 : land ? 3 : 2;
                   }
               });
    }
    [[nodiscard]] BSBChart open() const
    {
        BSBChart chart(m_path);
        if (!chart.loadChart())
            std::abort();
        return chart;
    }
    static const BigChart& instance()
    {
        static const BigChart chart;
        return chart;
    }

private:
    TemporaryFolder m_folder;
    std::filesystem::path m_path;
};

struct View {
    static constexpr int width = 1920;
    static constexpr int height = 1080;
    std::vector<std::uint32_t> pixels = std::vector<std::uint32_t>(std::size_t{width} * height);

    void draw(const BSBChart& chart, double x, double y, double reduction, double turn)
    {
        std::fill(pixels.begin(), pixels.end(), 0U);
        const double c = std::cos(turn) * reduction;
        const double s = std::sin(turn) * reduction;
        RasterRenderer::draw(
            chart,
            [=](Point p) {
                const Point from{p.x - width / 2.0, p.y - height / 2.0};
                return Point{x + from.x * c - from.y * s, y - from.x * s - from.y * c};
            },
            PaletteScheme::Day, RasterRenderer::Borders::Ignore,
            {pixels, width, height, std::size_t{width}});
        benchmark::DoNotOptimize(pixels.data());
    }
};

/// What the process holds in memory now, the mapped file included.
double residentMegabytes()
{
    std::ifstream status("/proc/self/statm");
    std::size_t all = 0;
    std::size_t resident = 0;
    status >> all >> resident;
    return static_cast<double>(resident) * static_cast<double>(::sysconf(_SC_PAGESIZE)) / 1e6;
}

void openChart(benchmark::State& state)
{
    const BigChart& file = BigChart::instance();
    while (state.KeepRunning())
        benchmark::DoNotOptimize(file.open().loaded());
}
BENCHMARK(openChart)->Unit(benchmark::kMillisecond);

/// Every row of the chart, the rate in decoded bytes.
void decodeRows(benchmark::State& state)
{
    const BSBChart chart = BigChart::instance().open();
    std::vector<std::uint8_t> row(side);
    while (state.KeepRunning())
        for (int y = 0; y < side; ++y)
            chart.pyramid().rows().decode(y, 0, row);
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * side * side);
}
BENCHMARK(decodeRows)->Unit(benchmark::kMillisecond);

/// The first view: nothing is in memory yet. Argument: reduction.
void firstView(benchmark::State& state)
{
    View view;
    while (state.KeepRunning()) {
        const BSBChart chart = BigChart::instance().open();
        view.draw(chart, side / 2.0, side / 2.0, static_cast<double>(state.range(0)), 0);
    }
}
BENCHMARK(firstView)->Arg(1)->Arg(4)->Arg(16)->Unit(benchmark::kMillisecond);

/// The same view again. Arguments: reduction in tenths, turn in degrees.
void sameView(benchmark::State& state)
{
    const BSBChart chart = BigChart::instance().open();
    View view;
    while (state.KeepRunning())
        view.draw(chart, side / 2.0, side / 2.0, static_cast<double>(state.range(0)) / 10,
                  static_cast<double>(state.range(1)) * 0.0174533);
}
BENCHMARK(sameView)->ArgsProduct({{4, 10, 14, 40}, {0, 30}})->Unit(benchmark::kMillisecond);

/// Across the whole chart and back in steps of 100 view pixels. Argument: reduction.
void pan(benchmark::State& state)
{
    const BSBChart chart = BigChart::instance().open();
    View view;
    const auto reduction = static_cast<double>(state.range(0));
    double at = 0;
    double most = 0;
    while (state.KeepRunning()) {
        const double place = std::abs(std::remainder(at, 2.0 * side));
        view.draw(chart, place, place, reduction, 0.5);
        at += 100 * reduction;
        most = std::max(most, residentMegabytes());
    }
    state.counters["mostMB"] = most;
}
BENCHMARK(pan)->Arg(1)->Arg(2)->Arg(5)->Iterations(200)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace kelvox

BENCHMARK_MAIN();
