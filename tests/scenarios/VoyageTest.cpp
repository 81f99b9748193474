#include "app/SettingRow.h"
#include "app/SettingsDialog.h"
#include "app/nav/NavActions.h"
#include "app/nav/PrintJob.h"
#include "base/Folders.h"
#include "scenarios/Scenario.h"

#include <QComboBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QLineEdit>
#include <QMenu>
#include <QPdfWriter>
#include <QPushButton>

#include <fstream>

namespace kelvox {
namespace {

class VoyageTest : public Scenario {
protected:
    /// Answers a file dialog with a file or folder.
    static void answer(QWidget& dialog, const std::filesystem::path& file)
    {
        auto* name = dialog.findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
        ASSERT_TRUE(name);
        name->setText(QString::fromStdString(file.string()));
        QTest::keyClick(name, Qt::Key_Return);
        if (dialog.isVisible()) // the completer of the field took the key
            QTest::keyClick(name, Qt::Key_Return);
    }
    /// A route by clicks on the chart, ended by Enter.
    RoutePointer makeRoute(const std::vector<QPoint>& points)
    {
        key(Qt::Key_R);
        for (const QPoint point : points)
            clickChart(point);
        shot(QStringLiteral("route-by-mouse"));
        QTest::keyClick(&chart(), Qt::Key_Return);
        return program().routes().count() > 0
            ? program().routes().route(program().routes().count() - 1)
            : nullptr;
    }
    /// The simulated vessel in open water, fast, steering to whatever is the active waypoint.
    void sail(Position from, double knots)
    {
        const auto file = folder() / "sail.json";
        std::ofstream(file) << "{\"start\": {\"latitude\": " << from.latitude
                            << ", \"longitude\": " << from.longitude << "}, \"speed\": " << knots
                            << ", \"heading\": 0, \"route\": [], \"traffic\": []}";
        ASSERT_TRUE(program().live().simulate(file));
        program().settings().set("simulatorSteersToWaypoint", true);
    }
};

TEST_F(VoyageTest, ChartsOfAFolderAreOpenedThroughTheDialogAndRemembered)
{
    const auto charts = folder() / "charts";
    std::filesystem::copy(folders::applicationResources() / "demo", charts);
    start();
    inDialog([this] { run("file.openFolder"); },
             [&](QWidget& dialog) {
                 shot(QStringLiteral("dialog-open-folder"), dialog);
                 answer(dialog, charts);
             });
    waitFor([this] { return window().charts().charts().size() >= 5; }, "the charts");
    ASSERT_EQ(window().charts().places(), std::vector{charts});
    waitForPicture();
    quit();
    start({}); // asks for the demo, as the first start does
    EXPECT_TRUE(window().openRemembered());
    EXPECT_EQ(window().charts().places(), std::vector{charts});
}

TEST_F(VoyageTest, ARouteMadeByMouseIsFollowedToItsEndWithTheAlarm)
{
    start();
    chart().setScale(12'000);
    sail(chart().center(), 60);
    waitFor([this] { return program().live().gps().speedOverGround() > 30; }, "the fast vessel");
    run("chart.follow"); // off: the chart stays where the clicks go
    window().showCard({}, nullptr);
    waitForPicture();
    program().settings().set("waypointApproachDistance", 0.05);
    program().waypointController().setWaypointArrivalAlarm(true);
    const QPoint vessel = at(program().live().gps().position());
    const auto route = makeRoute({vessel + QPoint(10, -60), vessel + QPoint(60, -110)});
    ASSERT_TRUE(route);
    ASSERT_EQ(route->count(), 2U);
    EXPECT_TRUE(window().isPanelOpen(QStringLiteral("routes")));
    click(QStringLiteral("followRoute"));
    ASSERT_EQ(program().routeController().gotoRoute(), route);
    const std::string first = program().waypointController().activeWaypointName();
    waitFor([&] { return program().waypointController().activeWaypointName() != first; },
            "the first waypoint", std::chrono::seconds(90));
    shot(QStringLiteral("route-followed"));
    waitFor([this] { return program().alarms().isShown("NSWaypointArrivalAlarm"); },
            "the alarm at the end", std::chrono::seconds(90));
    run("view.night");
    waitForPicture();
    shot(QStringLiteral("arrival-alarm-night"));
    click(QStringLiteral("alarmButton"));
    EXPECT_FALSE(program().alarms().isShown("NSWaypointArrivalAlarm"));
}

TEST_F(VoyageTest, APointIsPulledOutOfALegAndTakenBackByUndo)
{
    start();
    run("chart.follow");
    window().showCard({}, nullptr);
    const auto route = makeRoute({{300, 200}, {600, 420}});
    ASSERT_TRUE(route);
    run("nav.routes");
    waitForPicture();
    chart().grab(); // the layer learns where the leg is drawn
    const QPoint a = at(route->waypointReference(0)->waypoint->positionOnGPS());
    const QPoint b = at(route->waypointReference(1)->waypoint->positionOnGPS());
    dragChart((a + b) / 2, (a + b) / 2 + QPoint(70, -50));
    ASSERT_EQ(route->count(), 3U);
    shot(QStringLiteral("leg-pulled"));
    key(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(route->count(), 2U);
}

TEST_F(VoyageTest, ExportedAndImportedThroughTheDialogs)
{
    start();
    const Position middle = chart().center();
    program().waypointController().createWaypoint("Home", {}, 0, WaypointsModel::GroupCode::None,
                                                  middle.longitude, middle.latitude);
    const auto file = folder() / "home.gpx";
    inDialog([this] { run("file.export"); },
             [&](QWidget& dialog) {
                 shot(QStringLiteral("dialog-export"), dialog);
                 auto* save = dialog.findChild<QDialogButtonBox*>()->buttons().front();
                 inDialog([&] { save->click(); },
                          [&](QWidget& files) {
                              shot(QStringLiteral("dialog-save"), files);
                              answer(files, file);
                          });
             });
    waitFor([&] { return std::filesystem::exists(file); }, "the file");
    program().waypoints().removeAll();
    inDialog([this] { run("file.import"); }, [&](QWidget& dialog) { answer(dialog, file); });
    waitFor([this] { return program().waypoints().count() == 1; }, "the waypoint");
    EXPECT_TRUE(program().waypoints().waypointFromName("Home"));
    waitForPicture();
    shot(QStringLiteral("import-summary"));
}

TEST_F(VoyageTest, SettingsAreFoundAndTravelInAFile)
{
    start();
    run("program.settings");
    type(QStringLiteral("settingsSearch"), QStringLiteral("point every"));
    auto* const dialog = openDialog<SettingsDialog>();
    ASSERT_TRUE(dialog);
    shot(QStringLiteral("settings-search"), *dialog);
    auto* const row = find(QStringLiteral("setting.trackInterval"));
    ASSERT_TRUE(row && row->isVisible());
    EXPECT_LT(dialog->findChildren<SettingRow*>().size(), 6) << "too much was found";
    program().settings().set("trackInterval", 77LL);
    const auto file = folder() / "settings.json";
    inDialog([this] { click(QStringLiteral("NSExportSettings")); },
             [&](QWidget& files) { answer(files, file); });
    ASSERT_TRUE(std::filesystem::exists(file));
    program().settings().set("trackInterval", 30LL);
    inDialog([this] { click(QStringLiteral("NSImportSettings")); },
             [&](QWidget& files) { answer(files, file); });
    EXPECT_EQ(program().settings().integer("trackInterval"), 77);
}

TEST_F(VoyageTest, AnchorWatchSoundsWhenTheVesselLeavesTheCircle)
{
    start();
    window().showCard({}, nullptr);
    chart().setScale(20'000);
    sail(chart().center(), 1);
    program().settings().set("simulatorSteersToWaypoint", false);
    waitFor(
        [this] {
            const auto& gps = program().live().gps();
            return gps.position().isKnown() && gps.speedOverGround() < 2;
        },
        "the slow vessel");
    program().settings().set("anchorDragDistance", 0.1);
    window().openPanel(QStringLiteral("gps"));
    key(Qt::Key_A);
    ASSERT_TRUE(program().live().gps().anchorAlarm());
    waitForPicture();
    shot(QStringLiteral("anchor-watch"));
    program().live().simulator().setSpeed(45); // it breaks out
    waitFor([this] { return program().alarms().isShown("NSAnchorAlarm"); }, "the anchor alarm",
            std::chrono::seconds(60));
    shot(QStringLiteral("anchor-alarm"));
    // A dialog that must be answered first does not hide it.
    inDialog([this] { run("file.export"); },
             [this](QWidget& dialog) {
                 auto* button = dialog.findChild<QPushButton*>(QStringLiteral("alarmButton"));
                 ASSERT_TRUE(button && button->isVisible());
                 shot(QStringLiteral("dialog-with-alarm"), dialog);
                 QTest::mouseClick(button, Qt::LeftButton);
             });
    EXPECT_FALSE(program().alarms().isShown("NSAnchorAlarm"));
}

TEST_F(VoyageTest, ChartAndRoutePlanArePrinted)
{
    start();
    window().showCard({}, nullptr);
    run("chart.follow");
    const auto route = makeRoute({{250, 550}, {420, 380}, {600, 330}, {640, 180}});
    ASSERT_TRUE(route);
    auto* actions = window().findChild<NavActions*>();
    const auto print = [&](const RoutePointer& what, const char* name) {
        const auto file = folder() / name;
        auto writer = std::make_unique<QPdfWriter>(QString::fromStdString(file.string()));
        writer->setResolution(150);
        writer->setPageOrientation(what ? QPageLayout::Portrait : QPageLayout::Landscape);
        bool written = false;
        bool done = false;
        auto* job = PrintJob::start(*actions, what, std::move(writer), QLatin1String(name));
        QObject::connect(job, &PrintJob::finished, &window(), [&](bool good) {
            done = true;
            written = good;
        });
        waitFor([&] { return done; }, name, std::chrono::seconds(60));
        EXPECT_TRUE(written);
        std::ifstream in(file, std::ios::binary);
        std::string head(5, '\0');
        in.read(head.data(), 5);
        EXPECT_EQ(head, "%PDF-");
        EXPECT_GT(std::filesystem::file_size(file), 20'000U);
        if (const QString kept = qEnvironmentVariable("KELVOX_SCREENSHOTS"); !kept.isEmpty())
            std::filesystem::copy_file(file, kept.toStdString() + "/" + name,
                                       std::filesystem::copy_options::overwrite_existing);
    };
    print(nullptr, "chart.pdf");
    print(route, "route-plan.pdf");
}

} // namespace
} // namespace kelvox
