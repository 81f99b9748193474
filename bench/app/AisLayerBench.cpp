// Bringing the list of a crowded sea up to date; what the chart costs is told by bench_layers.

#include "app/LiveScene.h"
#include "app/panels/AisTableModel.h"
#include "support/AISWriter.h"

#include <benchmark/benchmark.h>

#include <QApplication>

#include <random>

namespace kelvox {

namespace {
class Traffic {
public:
    explicit Traffic(unsigned count)
        : m_count(count)
    {
        scene.start();
        for (unsigned i = 0; i < count; ++i)
            report();
        scene.live->ais().plotPosition({.longitude = 10.5, .latitude = 59.9});
    }
    void report()
    {
        std::uniform_int_distribution<int> speed(0, 220);
        std::uniform_int_distribution<int> course(0, 3599);
        const unsigned number = m_next++ % m_count;
        // Spread over the whole view, each always about its own place.
        const double x = static_cast<double>(number * 7919U % m_count) / m_count;
        const double y = static_cast<double>(number) / m_count;
        const RawReport raw{.mmsi = 211'000'000U + number,
                            .longitude = RawReport::raw(10.5 + (x - 0.5) * 0.9),
                            .latitude = RawReport::raw(59.9 + (y - 0.5) * 0.25),
                            .speed = speed(m_random),
                            .course = course(m_random),
                            .heading = course(m_random) / 10};
        const auto sentence = (number % 4 == 0 ? raw.classB() : raw.classA()).sentence();
        scene.live->gps().processRawSentence(sentence);
    }
    LiveScene scene;

private:
    unsigned m_count;
    unsigned m_next = 0;
    std::mt19937 m_random{1};
};

void reloadList(benchmark::State& state)
{
    Traffic traffic(static_cast<unsigned>(state.range(0)));
    AisTableModel model(*traffic.scene.live);
    model.sort(1, Qt::AscendingOrder);
    for ([[maybe_unused]] const auto _ : state) {
        traffic.report();
        traffic.scene.live->ais().goneIdle();
        model.sync();
    }
}
BENCHMARK(reloadList)->Arg(5000)->Unit(benchmark::kMillisecond);
} // namespace
} // namespace kelvox

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
