#include "app/AlarmBanner.h"
#include "app/PanelHost.h"
#include "app/Text.h"
#include "scenarios/Scenario.h"

#include <QDialog>
#include <QDockWidget>
#include <QPointer>
#include <QPushButton>
#include <QVBoxLayout>

namespace kelvox {
namespace {

class WindowTest : public Scenario {
protected:
    void raiseAlarm()
    {
        program().alarms().show({.key = "NSAnchorAlarm",
                                 .message = "The anchor drags",
                                 .informativeText = {},
                                 .button = "NSOK"});
        QApplication::processEvents();
    }
    [[nodiscard]] QDockWidget* dock(const char* name)
    {
        return window().findChild<QDockWidget*>(QStringLiteral("dock.") + QLatin1String(name));
    }
    [[nodiscard]] PanelHost& panels() { return *window().findChild<PanelHost*>(); }
    /// What a kill right now would leave behind, opened again.
    void startFromWhatIsOnDisk()
    {
        const auto settings = folder() / "config" / "settings.json";
        const std::string kept = program().settings().text("window.state");
        waitFor(
            [&] {
                FileSettings onDisk;
                return onDisk.load(settings) && onDisk.text("window.state") == kept;
            },
            "the settings on disk");
        const auto copy = folder() / "killed";
        std::filesystem::create_directories(copy / "config");
        std::filesystem::copy_file(settings, copy / "config" / "settings.json");
        startIn(copy);
    }
};

TEST_F(WindowTest, AnAlarmWakesAMinimizedWindowAsItWas)
{
    startEmpty();
    window().showMaximized();
    QApplication::processEvents();
    window().setWindowState(window().windowState() | Qt::WindowMinimized);
    QApplication::processEvents();
    ASSERT_TRUE(window().isMinimized());
    raiseAlarm();
    EXPECT_FALSE(window().isMinimized());
    EXPECT_TRUE(window().isMaximized()) << "it is not made smaller";
    auto* const banner = window().findChild<AlarmBanner*>();
    ASSERT_TRUE(banner);
    EXPECT_TRUE(banner->isVisible());
    window().setWindowState(window().windowState() | Qt::WindowMinimized);
    QApplication::processEvents();
    emit program().alarms().changed();
    QApplication::processEvents();
    EXPECT_TRUE(window().isMinimized()) << "the same alarm may be put aside";
}

TEST_F(WindowTest, AnAlarmLiesOverAModalDialogAndIsAcknowledgedThere)
{
    startEmpty();
    QDialog dialog(&window());
    dialog.setModal(true);
    auto* rows = new QVBoxLayout(&dialog);
    auto* field = new QPushButton(QStringLiteral("Something"), &dialog);
    rows->addWidget(field);
    dialog.resize(400, 200);
    dialog.show();
    raiseAlarm();
    auto* const banner = dialog.findChild<AlarmBanner*>();
    ASSERT_TRUE(banner);
    EXPECT_TRUE(banner->isVisible());
    const QPoint top(dialog.width() / 2, 4);
    EXPECT_TRUE(dialog.childAt(top) == banner || banner->isAncestorOf(dialog.childAt(top)));
    EXPECT_FALSE(banner->geometry().intersects(field->geometry())) << "it hides nothing";
    QTest::mouseClick(banner->findChild<QPushButton*>(QStringLiteral("alarmButton")),
                      Qt::LeftButton);
    EXPECT_FALSE(program().alarms().isShown("NSAnchorAlarm"));
    EXPECT_FALSE(banner->isVisible());
}

TEST_F(WindowTest, AnotherLanguageIsSpokenAtOnceInTheSameView)
{
    start();
    window().openPanel(QStringLiteral("waypoints"));
    chart().setScale(25'000);
    run("chart.follow"); // off
    chart().centerOn({.longitude = -27.41, .latitude = 47.55});
    run("program.settings");
    const QString before = find(QStringLiteral("mobButton"))->accessibleName();
    const QPointer<MainWindow> old(&window());
    program().settings().set("language", std::string("de"));
    waitFor([&] { return !old; }, "the window in German");
    adoptWindow();
    EXPECT_NE(find(QStringLiteral("mobButton"))->accessibleName(), before);
    EXPECT_EQ(find(QStringLiteral("mobButton"))->accessibleName(),
              text("NSCommand.vessel.manOverboard"));
    EXPECT_EQ(textCatalog().language(), "de");
    EXPECT_TRUE(window().isPanelOpen(QStringLiteral("waypoints")));
    EXPECT_TRUE(find(QStringLiteral("settingsDialog"))->isVisible()) << "to go on with";
    EXPECT_EQ(chart().scale(), 25'000);
    EXPECT_NEAR(chart().center().latitude, 47.55, 1e-6);
    waitForPicture();
    shot(QStringLiteral("language-at-once"));
    program().settings().set("language", std::string("en"));
    const QPointer<MainWindow> german(&window());
    waitFor([&] { return !german; }, "the window in English");
    adoptWindow();
    EXPECT_EQ(find(QStringLiteral("mobButton"))->accessibleName(), before);
}

TEST_F(WindowTest, TornOffPanelsComeBackWhereTheyWere)
{
    startEmpty();
    panels().open(QStringLiteral("tracks"));
    panels().tearOff(QStringLiteral("ais"));
    panels().tearOff(QStringLiteral("gps"));
    panels().tearOff(QStringLiteral("alarms"));
    QApplication::processEvents();
    ASSERT_TRUE(dock("ais") && dock("gps") && dock("alarms"));
    dock("ais")->setGeometry(500, 120, 400, 300);
    dock("gps")->setFloating(false);
    window().addDockWidget(Qt::LeftDockWidgetArea, dock("gps"));
    dock("alarms")->close();
    QApplication::processEvents();
    const auto isAsLeft = [this](const char* after) {
        SCOPED_TRACE(after);
        QApplication::processEvents();
        ASSERT_TRUE(dock("ais") && dock("gps") && dock("alarms"));
        EXPECT_TRUE(dock("ais")->isFloating());
        EXPECT_TRUE(dock("ais")->isVisible());
        EXPECT_EQ(dock("ais")->size(), QSize(400, 300));
        EXPECT_LT((dock("ais")->pos() - QPoint(500, 120)).manhattanLength(), 60);
        EXPECT_FALSE(dock("gps")->isFloating());
        EXPECT_EQ(window().dockWidgetArea(dock("gps")), Qt::LeftDockWidgetArea);
        EXPECT_FALSE(dock("alarms")->isVisible());
        EXPECT_TRUE(window().isPanelOpen(QStringLiteral("tracks")));
    };
    quit();
    startEmpty();
    isAsLeft("quit");
    startFromWhatIsOnDisk();
    isAsLeft("a kill");
    panels().putBack(QStringLiteral("ais"));
    EXPECT_TRUE(window().isPanelOpen(QStringLiteral("ais")));
    quit();
    startIn(folder() / "killed");
    EXPECT_FALSE(dock("ais")) << "put back is put back";
}

} // namespace
} // namespace kelvox
