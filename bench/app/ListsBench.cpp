// A step of scrolling through long lists, and a picture of the chart's own layers over a long
// track: what the hand feels. Both belong below the 16 ms of one picture on the screen.

#include "app/MainWindow.h"
#include "app/Program.h"
#include "base/Folders.h"
#include "support/TemporaryFolder.h"

#include <benchmark/benchmark.h>

#include <QAbstractItemView>
#include <QApplication>
#include <QScrollBar>

namespace kelvox {

namespace {
/// A program with much in it, in folders of its own.
class FullProgram {
public:
    FullProgram()
        : m_program({.configuration = m_folder.path() / "config",
                     .data = m_folder.path() / "data",
                     .cache = m_folder.path() / "cache",
                     .state = m_folder.path() / "state",
                     .resources = folders::applicationResources()})
    {
        constexpr int waypoints = 10'000;
        for (int i = 0; i < waypoints; ++i)
            m_program.waypointController().createWaypoint(
                "P" + std::to_string(i), {}, 0, WaypointsModel::GroupCode::None,
                10 + i % 100 / 500.0, 55 + static_cast<double>(i) / 50'000);
        constexpr int points = 50'000;
        for (int i = 0; i < points; ++i) {
            Track point;
            point.set({10 + 0.1 * std::cos(i / 900.0) + i * 2e-6, 55 + 0.1 * std::sin(i / 700.0)},
                      Date(std::chrono::seconds(1'000'000 + 30 * i)), 90, 5, 0, 0, 0, 0, 0, 0, {},
                      {});
            m_program.tracks().add(std::move(point), std::chrono::seconds(1));
        }
        window = std::make_unique<MainWindow>(m_program);
        window->resize(1280, 800);
        window->show();
        QApplication::processEvents();
    }
    ~FullProgram()
    {
        window.reset();
        m_program.tracks().removeAll();
        m_program.waypoints().removeAll();
    }
    Program& program() { return m_program; }

private:
    TemporaryFolder m_folder;
    Program m_program;

public:
    std::unique_ptr<MainWindow> window;
};

FullProgram& fullProgram()
{
    static FullProgram program;
    return program;
}

void scroll(benchmark::State& state, const char* panel)
{
    MainWindow& window = *fullProgram().window;
    auto* const list = window.openPanel(QLatin1String(panel))->findChild<QAbstractItemView*>();
    QApplication::processEvents();
    QScrollBar& bar = *list->verticalScrollBar();
    int step = 0;
    for ([[maybe_unused]] const auto _ : state) {
        bar.setValue(++step * 120 % std::max(bar.maximum(), 1));
        list->viewport()->repaint();
    }
    state.counters["rows"] = list->model()->rowCount();
}
BENCHMARK_CAPTURE(scroll, waypoints, "waypoints")->Unit(benchmark::kMillisecond);

/// A window with all its panels, made and taken away again.
void makeWindow(benchmark::State& state)
{
    Program& program = fullProgram().program();
    for ([[maybe_unused]] const auto _ : state)
        const MainWindow window(program);
}
BENCHMARK(makeWindow)->Unit(benchmark::kMillisecond);

/// Day to dusk to night, with every panel there is and one of them open.
void changeScheme(benchmark::State& state)
{
    Program& program = fullProgram().program();
    fullProgram().window->openPanel(QStringLiteral("waypoints"));
    int scheme = 0;
    for ([[maybe_unused]] const auto _ : state) {
        program.setScheme(static_cast<ColorScheme>(++scheme % 3));
        fullProgram().window->repaint();
    }
}
BENCHMARK(changeScheme)->Unit(benchmark::kMillisecond);

void sortWaypoints(benchmark::State& state)
{
    MainWindow& window = *fullProgram().window;
    auto* const list =
        window.openPanel(QStringLiteral("waypoints"))->findChild<QAbstractItemView*>();
    bool up = false;
    for ([[maybe_unused]] const auto _ : state) {
        list->model()->sort(0, (up = !up) ? Qt::AscendingOrder : Qt::DescendingOrder);
        list->viewport()->repaint();
    }
}
BENCHMARK(sortWaypoints)->Unit(benchmark::kMillisecond);

/// @param scale 1:n; far out all is in view, near in little
void paintTrack(benchmark::State& state)
{
    ChartView& chart = fullProgram().window->chart();
    chart.setScale(static_cast<int>(state.range(0)));
    double longitude = 10;
    for ([[maybe_unused]] const auto _ : state) {
        chart.centerOn({.longitude = longitude += 1e-5, .latitude = 55});
        chart.repaint();
    }
    state.counters["points"] = static_cast<double>(fullProgram().program().tracks().count());
}
BENCHMARK(paintTrack)->Arg(20'000)->Arg(200'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);
} // namespace

} // namespace kelvox
