#include "app/GribRequestDialog.h"
#include "app/MonitorDialog.h"
#include "app/SettingsDialog.h"
#include "scenarios/FrameWatch.h"
#include "scenarios/Scenario.h"

#include <QContextMenuEvent>
#include <QDir>

namespace kelvox {
namespace {

/// Nothing that opens at night is bright for a single frame: one white flash costs the eyes their
/// sight in the dark for minutes.
class FlashTest : public Scenario {
protected:
    /// Grey values of the night's colours end at 71.
    static constexpr int bright = 100;
    /// Of the screen. Lights and marks of the chart take less than a thousandth.
    static constexpr double most = 0.004;

    void SetUp() override
    {
        if (!FrameWatch::isPossible())
            GTEST_SKIP() << "wants a screen of X11";
    }
    /// Lets the screen show what was opened, and judges all that stood there since the last call.
    void judge(FrameWatch& watch, const char* what)
    {
        QApplication::processEvents();
        const int before = watch.frames();
        waitFor([&] { return watch.frames() > before + 1; }, "frames of the screen");
        EXPECT_LT(watch.brightestShare(), most) << what;
        if (watch.brightestShare() >= most) {
            const QString folder = qEnvironmentVariable("KELVOX_SCREENSHOTS");
            if (!folder.isEmpty() && QDir().mkpath(folder))
                watch.brightestFrame().save(folder + QStringLiteral("/flash-") + QLatin1String(what)
                                            + QStringLiteral(".png"));
        }
        watch.reset();
    }
};

TEST_F(FlashTest, NothingFlashesAtNight)
{
    start();
    window().showCard({}, nullptr);
    run("view.night");
    waitForPicture();
    quit();

    FrameWatch watch(bright);
    judge(watch, "the empty screen");
    startIn(folder());
    judge(watch, "start");
    window().openDemo();
    waitForPicture();
    judge(watch, "the first charts");
    chart().zoomOut();
    chart().zoomOut();
    waitForPicture();
    judge(watch, "zoom");
    for (const char* panel : {"gps", "instruments", "ais", "waypoints", "routes", "tracks",
                              "weather", "charts", "display", "connections", "devices", "alarms"}) {
        window().openPanel(QLatin1String(panel));
        judge(watch, panel);
    }
    run("program.settings");
    judge(watch, "settings");
    if (auto* settings = openDialog<SettingsDialog>())
        settings->close();
    GribRequestDialog request(window(), &window());
    request.show();
    judge(watch, "request");
    request.close();
    MonitorDialog monitor(program(), program().live().connection(ConsumerRole::GPS).monitor(),
                          QStringLiteral("GPS"), &window());
    monitor.show();
    judge(watch, "monitor");
    monitor.close();
    for (const char* command :
         {"file.open", "file.openFolder", "file.import", "file.export", "file.print"}) {
        inDialog([&] { run(command); }, [&](QWidget& /*dialog*/) { judge(watch, command); });
        judge(watch, "closed");
    }
    inDialog(
        [this] {
            const QPoint there(500, 300);
            QContextMenuEvent ask(QContextMenuEvent::Mouse, there, chart().mapToGlobal(there));
            QApplication::sendEvent(&chart(), &ask);
        },
        [&](QWidget& /*menu*/) { judge(watch, "menu"); });
    window().resize(900, 600);
    judge(watch, "smaller");
    window().resize(1280, 800);
    waitForPicture();
    judge(watch, "larger");
    program().settings().set("interfaceScale", 2.0);
    judge(watch, "scale");
    program().settings().set("interfaceScale", 1.0);
    judge(watch, "scale again");
    run("file.newWindow");
    judge(watch, "second window");
    for (QWidget* top : QApplication::topLevelWidgets())
        if (auto* other = qobject_cast<MainWindow*>(top); other && other != &window())
            other->close();
    run("view.fullScreen");
    judge(watch, "full screen");
    window().showMinimized();
    QApplication::processEvents();
    window().showNormal();
    judge(watch, "from an icon");
    EXPECT_GT(watch.frames(), 80) << "too few to have seen a flash";
}

/// The watch would see one.
TEST_F(FlashTest, AWhiteFrameIsSeen)
{
    FrameWatch watch(bright);
    QWidget white;
    QPalette colors;
    colors.setColor(QPalette::Window, Qt::white);
    white.setPalette(colors);
    white.setGeometry(0, 0, 300, 300);
    white.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&white));
    const int before = watch.frames();
    waitFor([&] { return watch.frames() > before + 2; }, "frames of the screen");
    EXPECT_GT(watch.brightestShare(), 0.05);
}

} // namespace
} // namespace kelvox
