// Traffic on the chart: painting all targets of a crowded view, taking in their reports, and
// bringing the list up to date. What a second of it costs is the sum of: 500 reports, ten pictures,
// two and a half reloads of the list.

#include "app/AisLayer.h"
#include "app/LiveScene.h"
#include "app/panels/AisTableModel.h"
#include "support/AISWriter.h"

#include <benchmark/benchmark.h>

#include <QApplication>

#include <random>

namespace kelvox {

namespace {
/// A window that nobody looks into: the layer only asks for it when somebody clicks.
class NoHost final : public ChartHost {
public:
    [[nodiscard]] Program& program() override { std::abort(); }
    [[nodiscard]] ChartView& chart() override { std::abort(); }
    [[nodiscard]] Commands& commands() override { std::abort(); }
    [[nodiscard]] ChartSet& charts() override { std::abort(); }
    [[nodiscard]] QWidget& window() override { std::abort(); }
    SidePanel* openPanel(const QString&) override { return nullptr; }
    void showPosition(Position) override { }
    void showNote(const QString&) override { }
    void showCard(const QString&, QWidget*) override { }
    void setTool(ChartLayer*) override { }
    [[nodiscard]] ChartLayer* tool() const override { return nullptr; }
    void openFiles(const std::vector<std::filesystem::path>&) override { }
    void setChartPlaces(const std::vector<std::filesystem::path>&) override { }
    void openDemo() override { }
};

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

void paintTargets(benchmark::State& state)
{
    Traffic traffic(static_cast<unsigned>(state.range(0)));
    traffic.scene.settings.set("showVesselNames", state.range(1) != 0);
    NoHost host;
    AisLayer layer(*traffic.scene.live, host);
    const Portrayal portrayal;
    const auto frame = ViewFrame::at(Position{.longitude = 10.5, .latitude = 59.9}, 200'000, 0,
                                     1920, 1080, 1, S57Controller::maximumDpi);
    QImage image(1920, 1080, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::white);
    for ([[maybe_unused]] const auto _ : state) {
        for (int i = 0; i < 50; ++i) // a tenth of a second's reports between two pictures
            traffic.report();
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        layer.paint(painter, frame, {.portrayal = portrayal, .scale = 1});
    }
    state.counters["shown"] = static_cast<double>(layer.shownTargets());
}
BENCHMARK(paintTargets)
    ->ArgNames({"targets", "names"})
    ->Args({500, 1})
    ->Args({5000, 0})
    ->Args({5000, 1})
    ->Unit(benchmark::kMillisecond);

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
