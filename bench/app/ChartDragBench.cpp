// A window on a folder of many charts: how long until the first charts are seen, without and with
// an index from before, and what a frame of a drag costs while the folder is still being read and
// the charts of each new view are loaded. KELVOX_BENCH_CHARTS names the folder; else 1,000 small
// demo cells, which take a minute to write.

#include "app/MainWindow.h"
#include "base/Folders.h"
#include "demo/DemoCharts.h"
#include "support/TemporaryFolder.h"

#include <QApplication>
#include <QMouseEvent>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <thread>

namespace {
using namespace kelvox;
using Clock = std::chrono::steady_clock;

double millisecondsSince(Clock::time_point start)
{
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

/// What this thread has worked; the rest of a frame's time others held the processor or it waited.
double workedMilliseconds()
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) * 1e-6;
}

void tell(const char* what, std::vector<double> times)
{
    std::ranges::sort(times);
    const auto at = [&](double share) {
        return times[static_cast<std::size_t>(share * static_cast<double>(times.size() - 1))];
    };
    std::printf("%-28s median %6.2f ms, 99 of 100 below %6.2f ms, worst %6.2f ms\n", what, at(0.5),
                at(0.99), at(1));
}

bool showsCharts(MainWindow& window)
{
    return !window.chart().scene()->cells.empty() && window.chart().showsWhatWasAskedFor();
}

void mouse(ChartView& chart, QEvent::Type type, QPointF at)
{
    const auto button = type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton;
    QMouseEvent event(type, at, chart.mapToGlobal(at), button,
                      type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton,
                      Qt::NoModifier);
    QCoreApplication::sendEvent(&chart, &event);
}

void run(const char* what, const std::filesystem::path& charts, const Program::Places& places)
{
    const auto start = Clock::now();
    Program program(places);
    MainWindow window(program);
    window.resize(1920, 1080);
    window.show();
    window.open({charts});
    double firstPicture = 0;
    while (!showsCharts(window))
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    firstPicture = millisecondsSince(start);
    std::printf("%s\n%-28s %.0f ms after the start; charts known by then: %zu%s\n", what,
                "first charts seen", firstPicture, window.charts().charts().size(),
                window.charts().isScanning() ? ", still reading" : "");

    ChartView& chart = window.chart();
    chart.setScale(25'000);
    std::vector<double> frames;
    std::vector<double> worked;
    std::vector<double> others;
    std::size_t loading = 0;
    double known = window.charts().isScanning() ? 0 : firstPicture;
    constexpr int frameCount = 600;
    constexpr QPointF step(-31, 17);
    QPointF at(1500, 300);
    mouse(chart, QEvent::MouseButtonPress, at);
    for (int i = 0; i < frameCount; ++i) {
        at += step * ((i / 100) % 2 ? -1 : 1);
        auto before = Clock::now();
        const double workedBefore = workedMilliseconds();
        mouse(chart, QEvent::MouseMove, at);
        chart.repaint();
        worked.push_back(workedMilliseconds() - workedBefore);
        frames.push_back(millisecondsSince(before));
        if (known == 0 && !window.charts().isScanning())
            known = millisecondsSince(start);
        loading += window.charts().missing() > 0 || window.charts().isScanning() ? 1 : 0;
        // What else the main thread has to do before the next movement of the hand.
        const auto next = before + std::chrono::milliseconds(16);
        do {
            before = Clock::now();
            QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
            others.push_back(millisecondsSince(before));
            // A window's thread sleeps between events; one that never does loses its turn.
            std::this_thread::sleep_for(std::chrono::microseconds(200));
        } while (Clock::now() < next);
    }
    mouse(chart, QEvent::MouseButtonRelease, at);
    std::printf("%d frames of a drag, %zu of them while charts were read or loaded\n", frameCount,
                loading);
    tell("a frame", std::move(frames));
    tell("of it work of its thread", std::move(worked));
    tell("what may delay the next", std::move(others));
    if (known > 0)
        std::printf("%-28s %.0f ms after the start: %zu charts\n\n", "all charts known", known,
                    window.charts().charts().size());
}
} // namespace

int main(int argc, char** argv)
{
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    const TemporaryFolder folder;
    std::filesystem::path charts = qEnvironmentVariable("KELVOX_BENCH_CHARTS").toStdString();
    if (charts.empty()) {
        charts = folder.path() / "charts";
        if (!DemoCharts::writeGrid(charts, 1'000))
            return 1;
    }
    const Program::Places places{.configuration = folder.path() / "configuration",
                                 .data = folder.path() / "data",
                                 .cache = folder.path() / "cache",
                                 .state = folder.path() / "state",
                                 .resources = folders::applicationResources()};
    run("Without an index", charts, places);
    run("With the index of before", charts, places);
    return 0;
}
