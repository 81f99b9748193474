#include "app/Application.h"
#include "app/SidePanel.h"
#include "app/panels/WeatherPanel.h"
#include "scenarios/Scenario.h"
#include "scenarios/WindForecast.h"

#include <fstream>
#include <iostream>

namespace kelvox {
namespace {

/// What held the window up, and during what. The time by the clock says little on a busy machine:
/// what is judged first is how long the thread was working itself.
class StallTest : public Scenario {
protected:
    StallTest()
    {
        application().setStallHandler([this](std::chrono::milliseconds duration,
                                             std::chrono::milliseconds working,
                                             const QByteArray& receiver) {
            std::cout << "during " << m_what << ": " << duration.count() << " ms, "
                      << working.count() << " working, " << receiver.toStdString() << "\n";
            m_longest = std::max(m_longest, working);
            m_longestByClock = std::max(m_longestByClock, duration);
        });
    }
    ~StallTest() override { application().setStallHandler({}); }

    static Application& application() { return *static_cast<Application*>(qApp); }

    /// As a key or the mouse would: from the event loop, so that it is measured.
    void act(const char* what, const std::function<void()>& action)
    {
        m_what = what;
        bool done = false;
        QTimer::singleShot(0, &window(), [&] {
            action();
            done = true;
        });
        waitFor([&] { return done; }, what);
        QApplication::processEvents();
        waitFor([this] { return chart().showsWhatWasAskedFor(); }, "the chart's picture");
    }
    /// Everything took less than the window may be held up.
    void judge() const
    {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
        constexpr auto most = std::chrono::milliseconds(4000);
#else
        constexpr auto most = std::chrono::milliseconds(100);
#endif
        EXPECT_LT(m_longest, most);
        // Waiting for a lock or a disk is no work, but shows by the clock even on a busy machine.
        EXPECT_LT(m_longestByClock, 15 * most);
    }
    void during(const char* what)
    {
        m_what = what;
    }

private:
    const char* m_what = "start";
    std::chrono::milliseconds m_longest{0}; ///< of working
    std::chrono::milliseconds m_longestByClock{0};
};

TEST_F(StallTest, ColoursPanelsAndViewsChangeAtOnce)
{
    start();
    during("the first seconds");
    waitFor([this] { return program().live().ais().model().count() > 3; }, "traffic");
    for (const char* scheme : {"view.night", "view.dusk", "view.day"})
        act(scheme, [&] { run(scheme); });
    for (const char* panel : {"gps", "instruments", "ais", "waypoints", "routes", "tracks",
                              "weather", "charts", "display", "connections", "alarms"})
        act(panel, [&] { window().openPanel(QLatin1String(panel)); });
    for (const char* scheme : {"view.night", "view.day"})
        act(scheme, [&] { run(scheme); });
    act("settings", [&] { run("program.settings"); });
    for (const char* scheme : {"view.night", "view.day"})
        act(scheme, [&] { run(scheme); });
    act("scale", [&] { program().settings().set("interfaceScale", 1.5); });
    for (int i = 0; i < 4; ++i)
        act("zoom", [&] { chart().zoomIn(); });
    judge();
}

TEST_F(StallTest, FilesAreTakenInWithoutHoldingUpTheWindow)
{
    start();
    const auto gpx = folder() / "many.gpx";
    {
        std::ofstream file(gpx);
        file << "<gpx version=\"1.1\">";
        for (int i = 0; i < 10'000; ++i)
            file << "<wpt lat=\"" << 47.4 + (i % 100) / 500.0 << "\" lon=\""
                 << -27.5 + (i / 100) / 500.0 << "\"><name>P" << i << "</name></wpt>";
        file << "</gpx>";
    }
    window().openPanel(QStringLiteral("waypoints"));
    act("import", [&] { window().openFiles({gpx}); });
    waitFor([this] { return program().waypoints().count() == 10'000; }, "the waypoints",
            std::chrono::seconds(60));
    waitForPicture();
    act("undo", [&] { program().undo(); });
    EXPECT_EQ(program().waypoints().count(), 0U);

    const auto grib = folder() / "wind.grb";
    std::ofstream(grib, std::ios::binary) << windForecast(24);
    act("weather", [&] { window().openFiles({grib}); });
    waitFor([this] { return program().weather().forecastDates().size() == 24; }, "the weather");
    act("overview", [&] { chart().setScale(1'000'000); });
    during("playing");
    click(QStringLiteral("weatherPlay"));
    int steps = 0;
    QObject::connect(&program(), &Program::weatherChanged, &window(), [&] { ++steps; });
    waitFor([&] { return steps >= 12; }, "twelve steps of the forecast", std::chrono::seconds(60));
    judge();
}

TEST_F(StallTest, ChartsLoadWithoutHoldingUpTheWindow)
{
    const char* const real = std::getenv("KELVOX_DATA");
    if (!real)
        GTEST_SKIP() << "wants real charts in KELVOX_DATA";
    start();
    act("opening", [&] { window().openFiles({std::filesystem::path(real) / "enc"}); });
    bool scanned = false;
    QObject::connect(&window().charts(), &ChartSet::scanned, &window(), [&] { scanned = true; });
    waitFor([&] { return scanned; }, "the index", std::chrono::seconds(120));
    ASSERT_GT(window().charts().charts().size(), 3U);
    int shown = 0;
    const ChartRecords charts = window().charts().charts();
    for (const auto& record : charts) {
        if (!record->isUsable() || ++shown > 6)
            continue;
        act("loading", [&] { chart().showBoundsAtStep(record->bounds); });
        waitFor([&] { return window().charts().missing() == 0; }, "the charts of the view",
                std::chrono::seconds(60));
        for (int i = 0; i < 3; ++i)
            act("zooming in", [&] { chart().zoomIn(); });
    }
    judge();
}

} // namespace
} // namespace kelvox
