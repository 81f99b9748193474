// The chart's tools in a window, by mouse and keys.

#include "app/NavScene.h"

#include "app/ChartSet.h"
#include "app/MeasureTool.h"
#include "app/PickLayer.h"
#include "app/SearchBox.h"
#include "app/SettingRow.h"
#include "app/SettingsDialog.h"
#include "app/panels/WeatherPanel.h"
#include "base/File.h"
#include "navigation/NavMath.h"
#include "support/GribWriter.h"
#include "support/SmallCells.h"

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QNativeGestureEvent>
#include <QScrollArea>
#include <QSignalSpy>
#include <QTest>

namespace kelvox {
namespace {

using ChartWindow = NavScene;

TEST_F(ChartWindow, MeasuringAddsTheLegsAndGoesAwayWithEsc)
{
    auto& measure = *window.findChild<MeasureTool*>();
    window.commands().action("chart.measure")->trigger();
    ASSERT_TRUE(measure.isActive());
    const Position a = at({300, 300});
    const Position b = at({500, 300});
    const Position c = at({500, 500});
    for (const QPointF point : {QPointF(300, 300), QPointF(500, 300), QPointF(500, 500)})
        click(point);
    const double whole = NavMath::distanceFromPoint(a, b) + NavMath::distanceFromPoint(b, c);
    EXPECT_NEAR(measure.miles(), whole, whole * 1e-4);
    key(Qt::Key_Backspace);
    EXPECT_EQ(measure.points().size(), 2U);
    settle();
    key(Qt::Key_Escape);
    EXPECT_FALSE(measure.isActive());
    EXPECT_FALSE(window.commands().action("chart.measure")->isChecked());
    EXPECT_EQ(program.waypoints().count(), 0U);
}

TEST_F(ChartWindow, TwoFingersZoomAndCarryTheChartUnderThem)
{
    const std::unique_ptr<QPointingDevice> screen(QTest::createTouchDevice());
    const auto fingers = [&](QPoint a, QPoint b) {
        QTest::touchEvent(&chart(), screen.get()).move(0, a, &chart()).move(1, b, &chart());
        QApplication::processEvents();
    };
    const Position held = at({500, 300});
    const double scale = chart().scale();
    QTest::touchEvent(&chart(), screen.get())
        .press(0, QPoint(450, 300), &chart())
        .press(1, QPoint(550, 300), &chart());
    for (int step = 1; step <= 100; ++step) // slowly: no step is lost to whole scales
        fingers({450 - step, 300}, {550 + step, 300});
    EXPECT_NEAR(scale / chart().scale(), 3, 0.1);
    EXPECT_NEAR(at({500, 300}).longitude, held.longitude, onePixel);
    EXPECT_NEAR(at({500, 300}).latitude, held.latitude, onePixel);
    for (int step = 1; step <= 10; ++step)
        fingers({350, 300 + 5 * step}, {650, 300 + 5 * step});
    EXPECT_NEAR(at({500, 350}).latitude, held.latitude, onePixel);
    EXPECT_NEAR(scale / chart().scale(), 3, 0.1);
    QTest::touchEvent(&chart(), screen.get())
        .release(0, QPoint(350, 350), &chart())
        .release(1, QPoint(650, 350), &chart());
    EXPECT_EQ(program.waypoints().count(), 0U);

    const double before = chart().scale();
    QNativeGestureEvent pad(Qt::ZoomNativeGesture, QPointingDevice::primaryPointingDevice(), 2,
                            QPointF(500, 350), QPointF(500, 350), QPointF(500, 350), 0.25, {});
    QApplication::sendEvent(&chart(), &pad);
    EXPECT_NEAR(before / chart().scale(), 1.25, 0.01);
}

TEST_F(ChartWindow, TheSearchFindsPositionsWaypointsAndCommands)
{
    waypoint("Home berth", {400, 300});
    auto& search = *window.findChild<SearchBox*>();
    const auto berth = search.find(QStringLiteral("berth"));
    ASSERT_FALSE(berth.empty());
    EXPECT_EQ(berth[0].name, QStringLiteral("Home berth"));
    const auto typed = search.find(QStringLiteral("59 30N 10 30E"));
    ASSERT_TRUE(!typed.empty() && typed[0].position);
    EXPECT_DOUBLE_EQ(typed[0].position->latitude, 59.5);
    EXPECT_FALSE(search.find(QStringLiteral("full screen")).empty());
    EXPECT_TRUE(search.find(QStringLiteral("   ")).empty());

    search.setText(QStringLiteral("59 30N 10 30E"));
    QKeyEvent enter(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier);
    QApplication::sendEvent(&search, &enter);
    EXPECT_NEAR(chart().center().latitude, 59.5, onePixel);
    EXPECT_NEAR(chart().center().longitude, 10.5, onePixel);
    EXPECT_TRUE(search.text().isEmpty());
}

TEST_F(ChartWindow, TheFirstViewShowsAllChartsAndLaterOnesLeaveTheViewAlone)
{
    const SmallCell small; // 10.45 to 10.55 E, 59.45 to 59.55 N
    S57CellWriter other({.name = "KV5TEST2"});
    other.addArea("M_COVR", {{11, 59.6}, {11.1, 59.6}, {11.1, 59.7}, {11, 59.7}},
                  {{"CATCOV", "1"}});
    ASSERT_TRUE(small.writer.save(folder.path() / "charts"));
    ASSERT_TRUE(other.save(folder.path() / "charts" / "below"));
    window.openFiles({folder.path() / "charts"});
    const auto pixelOf = [&](Position position) {
        const ViewFrame frame = chart().frame();
        return frame.pixelOf(frame.view.positionToPoint(position));
    };
    const auto shows = [&](Position position) {
        const ViewFrame frame = chart().frame();
        const Point p = pixelOf(position);
        return p.x > 0 && p.y > 0 && p.x < frame.width && p.y < frame.height;
    };
    const Position southWest{10.45, 59.45};
    const Position northEast{11.1, 59.7};
    waitFor([&] { return shows(southWest) && shows(northEast); });
    waitFor([&] { return chart().scene()->cells.size() == 2; });
    const Point across = pixelOf(northEast) - pixelOf(southWest);
    EXPECT_GT(std::max(across.x / chart().frame().width, -across.y / chart().frame().height), 0.9)
        << "no smaller than need be";

    S57CellWriter far({.name = "KV5TEST3"});
    far.addArea("M_COVR", {{20, 50}, {20.1, 50}, {20.1, 50.1}, {20, 50.1}}, {{"CATCOV", "1"}});
    ASSERT_TRUE(far.save(folder.path() / "more"));
    window.openFiles({folder.path() / "more"});
    press({500, 300});
    move({540, 300});
    move({560, 300});
    const Position held = chart().center();
    const ChartSet& charts = static_cast<ChartHost&>(window).charts();
    waitFor([&] { return charts.bounds().right > 20; });
    settle();
    release({560, 300});
    EXPECT_NEAR(chart().center().longitude, held.longitude, 1e-9)
        << "a user who has moved the chart meanwhile is left where he is";
}

TEST_F(ChartWindow, AClickTellsWhatLiesThereAndEscClosesIt)
{
    const SmallCell cell;
    ASSERT_TRUE(cell.writer.save(folder.path() / "charts"));
    window.openFiles({folder.path() / "charts"});
    waitFor([&] { return !chart().scene()->cells.empty(); });
    chart().setScale(10'000);
    chart().centerOn({.longitude = 10.48, .latitude = 59.5});
    settle();
    auto& picks = *window.findChild<PickLayer*>();
    picks.pick({.at = QPointF(chart().width() / 2.0, chart().height() / 2.0),
                .position = chart().center(),
                .modifiers = {}});
    ASSERT_GE(picks.hits().size(), 2U) << "the buoy, and the depth area around it";
    EXPECT_EQ(picks.hits()[0].kind, ChartPick::Kind::Mark);
    EXPECT_EQ(picks.hits().back().kind == ChartPick::Kind::Mark, false);
    picks.show(picks.hits().size() - 1);
    settle();
    key(Qt::Key_Escape);
    settle();
    EXPECT_TRUE(picks.hits().empty());
}

TEST_F(ChartWindow, SettingsCountAtOnceAndFindTheirWayBack)
{
    SettingsDialog dialog(program, window.commands(), &window);
    dialog.findChild<QLineEdit*>()->setText(QStringLiteral("soundings"));
    const auto rows = dialog.findChildren<SettingRow*>();
    ASSERT_FALSE(rows.empty());
    SettingRow* soundings = nullptr;
    for (SettingRow* row : rows)
        if (row->item().key == "showSoundings")
            soundings = row;
    ASSERT_TRUE(soundings);
    EXPECT_TRUE(chart().scene()->settings.showSoundings);
    soundings->findChild<QCheckBox*>()->click();
    EXPECT_FALSE(chart().scene()->settings.showSoundings);
    EXPECT_TRUE(program.settings().isSet("showSoundings"));
    program.settings().remove("showSoundings");
    EXPECT_TRUE(soundings->findChild<QCheckBox*>()->isChecked());
    EXPECT_TRUE(chart().scene()->settings.showSoundings);
}

TEST_F(ChartWindow, AKeyThatIsTakenIsNotGivenTwice)
{
    Commands& commands = window.commands();
    const auto before = commands.action("chart.measure")->shortcut();
    const auto* owner =
        commands.setKey("chart.measure", commands.action("chart.follow")->shortcut());
    ASSERT_TRUE(owner);
    EXPECT_EQ(owner->id, "chart.follow");
    EXPECT_EQ(commands.action("chart.measure")->shortcut(), before);
    // And none of the standard keys stands for two commands.
    std::map<QString, std::string> keys;
    for (const auto& command : commands.all())
        if (!command.standard.isEmpty()) {
            const auto [it, isNew] = keys.emplace(command.standard.toString(), command.id);
            EXPECT_TRUE(isNew) << command.id << " and " << it->second;
        }
}

TEST_F(ChartWindow, AWeatherFileIsReadOnAWorkerAndNonsenseIsTold)
{
    auto& panel = *window.findChild<WeatherPanel*>();
    GribSpec north;
    north.parameter = 34;
    const auto file = folder.path() / "wind.grb";
    ASSERT_TRUE(writeFileAtomically(file, GribWriter::message({}) + GribWriter::message(north)));
    QSignalSpy loaded(&panel, &WeatherPanel::loaded);
    window.openFiles({file});
    waitFor([&] { return !loaded.empty(); });
    EXPECT_FALSE(program.gribModel().points().empty());
    const auto nonsense = folder.path() / "nonsense.grb";
    ASSERT_TRUE(writeFileAtomically(nonsense, "GRIBnonsense"));
    loaded.clear();
    window.openFiles({nonsense});
    waitFor([&] { return !loaded.empty(); });
    EXPECT_FALSE(program.gribModel().points().empty()) << "what was there stays";
}

} // namespace
} // namespace kelvox
