// What the chart's own layers cost the main thread over a crowded view of 1920 by 1080: 5,000
// targets of which 500 report each second, and a track of 50,000 points. A frame is timed by what
// the main thread works for it, not by what else runs on the machine; all of it belongs below the
// 16 ms of one picture on the screen. "Final" says how long after a change of the scale the view
// looks as it will stay.

#include "app/MainWindow.h"
#include "base/Folders.h"
#include "support/AISWriter.h"
#include "support/TemporaryFolder.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QMouseEvent>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <random>

#include <unistd.h>

namespace {
using namespace kelvox;

constexpr Position middle{.longitude = 10.5, .latitude = 59.9};
constexpr int normalScale = 200'000;
constexpr unsigned reportsPerSecond = 500;

/// Milliseconds for which the calling thread has worked, not waited.
double worked()
{
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) * 1e-6;
}

double residentMegabytes()
{
    QFile file(QStringLiteral("/proc/self/statm"));
    if (!file.open(QFile::ReadOnly))
        return 0;
    return file.readAll().split(' ').at(1).toDouble() * static_cast<double>(sysconf(_SC_PAGESIZE))
        / 1e6;
}

/// Lets the program go on.
void run(qint64 milliseconds)
{
    QElapsedTimer since;
    since.start();
    do
        QCoreApplication::processEvents();
    while (since.elapsed() < milliseconds && (usleep(200), true));
}

void tell(const char* what, std::vector<double> times)
{
    std::ranges::sort(times);
    const auto at = [&](double share) {
        return times[static_cast<std::size_t>(share * static_cast<double>(times.size() - 1))];
    };
    std::printf("  %-22s median %6.2f ms, 95 of 100 below %6.2f ms, worst %6.2f ms\n", what,
                at(0.5), at(0.95), at(1));
}

class BusyWindow {
public:
    BusyWindow(unsigned targets, int points, bool names)
        : m_targets(targets)
    {
        for (int i = 0; i < points; ++i) {
            Track point;
            point.set({middle.longitude + 0.1 * std::cos(i / 900.0) + i * 2e-6,
                       middle.latitude + 0.1 * std::sin(i / 700.0)},
                      Date(std::chrono::seconds(1'000'000 + 30 * i)), 90, 5, 0, 0, 0, 0, 0, 0, {},
                      {});
            m_program.tracks().add(std::move(point), std::chrono::seconds(1));
        }
        m_program.settings().set("ais.useGPSPort", true);
        m_program.settings().set("showVesselNames", names);
        m_program.live().settingChanged("ais.useGPSPort");
        report(targets);
        m_window.resize(2300, 1250);
        m_window.show();
        chart().centerOn(middle);
        chart().setScale(normalScale);
        run(800);
        chart().setFixedSize(1920, 1080);
        run(1500);
    }
    ~BusyWindow() { m_program.tracks().removeAll(); }

    [[nodiscard]] ChartView& chart() { return m_window.chart(); }
    void report(unsigned count)
    {
        std::uniform_int_distribution<int> speed(0, 220);
        std::uniform_int_distribution<int> course(0, 3599);
        for (unsigned i = 0; m_targets > 0 && i < count; ++i) {
            const unsigned number = m_next++ % m_targets;
            // Spread over the whole view, each always about its own place.
            const double x = static_cast<double>(number * 7919U % m_targets) / m_targets;
            const double y = static_cast<double>(number) / m_targets;
            const RawReport raw{.mmsi = 211'000'000U + number,
                                .longitude = RawReport::raw(middle.longitude + (x - 0.5) * 1.6),
                                .latitude = RawReport::raw(middle.latitude + (y - 0.5) * 0.45),
                                .speed = speed(m_random),
                                .course = course(m_random),
                                .heading = course(m_random) / 10};
            m_program.live().gps().processRawSentence(
                (number % 4 == 0 ? raw.classB() : raw.classA()).sentence());
        }
    }

    /// Frames 16 ms apart while the reports go on.
    template <typename Move> void frames(const char* what, Move move)
    {
        constexpr int count = 250;
        constexpr qint64 pace = 16;
        std::vector<double> times;
        for (int i = 0; i < count; ++i) {
            QElapsedTimer since;
            since.start();
            report(reportsPerSecond * pace / 1000);
            const double before = worked();
            move(i);
            QCoreApplication::processEvents(); // paints, and takes in what workers have made
            times.push_back(worked() - before);
            run(std::max<qint64>(pace - since.elapsed(), 0));
        }
        tell(what, std::move(times));
    }

    void dragAndZoom()
    {
        QPointF at(1500, 300);
        mouse(QEvent::MouseButtonPress, at);
        frames("a frame of a drag", [&](int i) {
            at += QPointF(-23, 11) * ((i / 50) % 2 ? -1 : 1);
            mouse(QEvent::MouseMove, at);
        });
        mouse(QEvent::MouseButtonRelease, at);
        run(1000);
        chart().centerOn(middle);
        frames("a frame of zooming", [&](int i) {
            chart().setScale(static_cast<int>(normalScale * std::pow(2, std::sin(i * 0.05) * 1.5)));
        });
        chart().setScale(normalScale);
        run(1000);
    }

    /// Without traffic, which never lets the view come to rest.
    void changes()
    {
        std::vector<double> times;
        for (int i = 0; i < 6; ++i) {
            chart().setScale(i % 2 ? normalScale : normalScale / 4);
            QElapsedTimer since;
            since.start();
            std::vector<std::pair<double, QImage>> seen;
            while (since.elapsed() < 700) {
                run(4);
                const double when = static_cast<double>(since.nsecsElapsed()) * 1e-6;
                QImage now = chart().grab().toImage();
                if (seen.empty() || seen.back().second != now)
                    seen.emplace_back(when, std::move(now));
            }
            times.push_back(seen.back().first);
        }
        tell("final after a zoom step", std::move(times));
    }

    void atRest(int seconds)
    {
        const double memory = residentMegabytes();
        std::vector<double> shares;
        for (int i = 0; i < seconds; ++i) {
            const double before = worked();
            for (int tenth = 0; tenth < 10; ++tenth) {
                report(reportsPerSecond / 10);
                run(100);
            }
            shares.push_back(worked() - before);
        }
        tell("a second at rest", std::move(shares));
        std::printf("  memory %.0f MB, %+.0f MB in %d seconds\n", residentMegabytes(),
                    residentMegabytes() - memory, seconds);
    }

private:
    void mouse(QEvent::Type type, QPointF at)
    {
        const auto button = type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton;
        QMouseEvent event(type, at, chart().mapToGlobal(at), button,
                          type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton,
                          Qt::NoModifier);
        QCoreApplication::sendEvent(&chart(), &event);
    }

    TemporaryFolder m_folder;
    unsigned m_targets;
    unsigned m_next = 0;
    std::mt19937 m_random{1};
    Program m_program{{.configuration = m_folder.path() / "configuration",
                       .data = m_folder.path() / "data",
                       .cache = m_folder.path() / "cache",
                       .state = m_folder.path() / "state",
                       .resources = folders::applicationResources()}};
    MainWindow m_window{m_program};
};
} // namespace

int main(int argc, char** argv)
{
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    struct Scene {
        const char* what;
        unsigned targets;
        int points;
        bool names;
    };
    const Scene scenes[] = {{"The chart alone", 0, 0, false},
                            {"200 targets with names, a track of 1,000 points", 200, 1'000, true},
                            {"5,000 targets without names", 5'000, 0, false},
                            {"5,000 targets with names", 5'000, 0, true},
                            {"A track of 50,000 points", 0, 50'000, false},
                            {"5,000 targets with names and the track", 5'000, 50'000, true}};
    const int seconds = argc > 1 ? std::atoi(argv[1]) : 5;
    const int only = argc > 2 ? std::atoi(argv[2]) : -1; // one of the scenes, from 0
    for (const Scene& scene : scenes) {
        if (only >= 0 && &scene != scenes + only)
            continue;
        BusyWindow window(scene.targets, scene.points, scene.names);
        std::printf("%s, chart of %d by %d\n", scene.what, window.chart().width(),
                    window.chart().height());
        window.changes();
        window.dragAndZoom();
        window.atRest(seconds);
        std::fflush(stdout);
    }
    return 0;
}
