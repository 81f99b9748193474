#include "app/NavScene.h"

#include "app/nav/SheetLine.h"

namespace kelvox {
namespace {

using NavGestures = NavScene;

TEST_F(NavGestures, AWaypointIsDraggedAndUndoBringsItBack)
{
    const auto buoy = waypoint("BUOY", {400, 300});
    settle();
    drag({402, 301}, {500, 360});
    EXPECT_LT(missedBy(buoy, {500, 360}), onePixel);
    program.undo();
    EXPECT_LT(missedBy(buoy, {400, 300}), onePixel);
    const Position center = chart().center();
    EXPECT_NEAR(center.longitude, 10, 1e-6) << "the chart stayed where it was";
}

TEST_F(NavGestures, EscTakesADragBackWhileTheButtonIsStillDown)
{
    const auto buoy = waypoint("BUOY", {400, 300});
    settle();
    const auto steps = sharedEditHistory().revision();
    press({400, 300});
    move({450, 330});
    key(Qt::Key_Escape);
    move({500, 360});
    release({500, 360});
    EXPECT_LT(missedBy(buoy, {400, 300}), onePixel);
    EXPECT_EQ(sharedEditHistory().revision(), steps) << "no edit, nothing to undo";
}

TEST_F(NavGestures, LockedWaypointsLetTheChartMove)
{
    const auto buoy = waypoint("BUOY", {400, 300});
    settle();
    program.settings().set("lockWaypoints", true);
    const Position before = buoy->positionOnGPS();
    drag({400, 300}, {500, 300});
    EXPECT_EQ(buoy->positionOnGPS(), before);
    EXPECT_LT(chart().center().longitude, 10 - 10 * onePixel);
}

TEST_F(NavGestures, OnlyALegOfTheSelectedRouteIsPulled)
{
    const auto trip = route("Trip", {waypoint("A", {300, 300}), waypoint("B", {600, 300})});
    settle();
    drag({450, 300}, {450, 420});
    EXPECT_EQ(trip->count(), 2U) << "the chart was dragged across it";

    key(Qt::Key_Escape); // or it would glide on
    chart().centerOn({.longitude = 10, .latitude = 55});
    settle();
    click({450, 300});
    EXPECT_EQ(actions().selection().route(), trip);
    settle();
    drag({450, 300}, {450, 420});
    ASSERT_EQ(through(trip), "A WP0001 B");
    EXPECT_LT(missedBy(program.waypoints().waypointFromName("WP0001"), {450, 420}), onePixel);
    program.undo();
    EXPECT_EQ(through(trip), "A B");
    EXPECT_EQ(program.waypoints().count(), 2U) << "one step with its waypoint";
}

TEST_F(NavGestures, ARouteIsMadeByClicksAndTakesTheWaypointsItMeets)
{
    waypoint("HARBOUR", {600, 300});
    settle();
    actions().startRoute();
    click({300, 300});
    click({400, 500});
    key(Qt::Key_Backspace);
    QApplication::processEvents();
    click({450, 400});
    click({605, 296}); // near enough
    EXPECT_EQ(program.routes().count(), 0U) << "nothing is kept before the end";
    key(Qt::Key_Return);
    QApplication::processEvents();
    ASSERT_EQ(program.routes().count(), 1U);
    EXPECT_EQ(window.tool(), nullptr);
    const auto made = program.routes().route(0);
    ASSERT_EQ(made->count(), 3U) << through(made);
    EXPECT_LT(missedBy(made->waypointReference(1)->waypoint, {450, 400}), onePixel);
    EXPECT_EQ(made->waypointReference(2)->waypoint->name, "HARBOUR");
    EXPECT_EQ(program.waypoints().count(), 3U);
    program.undo();
    EXPECT_EQ(program.waypoints().count(), 1U);
}

TEST_F(NavGestures, PressAndHoldAsksForTheMenuAndTheReleaseIsNoClick)
{
    QObject::disconnect(&chart(), &ChartView::menuRequested, nullptr, nullptr); // none is opened
    std::optional<QPointF> asked;
    int clicks = 0;
    QObject::connect(&chart(), &ChartView::menuRequested, &chart(),
                     [&](const ChartPointer& pointer) { asked = pointer.at; });
    QObject::connect(&chart(), &ChartView::clicked, &chart(), [&] { ++clicks; });
    press({500, 350});
    move({502, 351}); // a finger is never quite still
    waitFor([&] { return asked.has_value(); });
    release({502, 351});
    EXPECT_EQ(asked, QPointF(500, 350));
    EXPECT_EQ(clicks, 0);
    asked.reset();
    drag({500, 350}, {600, 350});
    key(Qt::Key_Escape);
    click({300, 300});
    EXPECT_EQ(clicks, 1);
    EXPECT_FALSE(asked);
}

TEST_F(NavGestures, ARouteIsMadeByKeysAlone)
{
    actions().startRoute();
    const auto click = [this] { window.commands().action("chart.clickAtCross")->trigger(); };
    const Position first = at(QPointF(chart().rect().center()));
    click();
    key(Qt::Key_Right);
    key(Qt::Key_Down);
    click();
    EXPECT_TRUE(chart().cursorPosition()) << "the status line tells where the cross is";
    key(Qt::Key_Return);
    QApplication::processEvents();
    ASSERT_EQ(program.routes().count(), 1U);
    const auto made = program.routes().route(0);
    ASSERT_EQ(made->count(), 2U);
    const Position a = made->waypointReference(0)->waypoint->positionOnGPS();
    const Position b = made->waypointReference(1)->waypoint->positionOnGPS();
    EXPECT_NEAR(a.latitude, first.latitude, onePixel);
    EXPECT_GT(b.longitude, a.longitude + onePixel);
    EXPECT_LT(b.latitude, a.latitude - onePixel);
}

TEST_F(NavGestures, EscAbandonsARouteInTheMaking)
{
    actions().startRoute();
    click({300, 300});
    click({400, 500});
    key(Qt::Key_Escape);
    EXPECT_EQ(window.tool(), nullptr);
    EXPECT_EQ(program.routes().count() + program.waypoints().count(), 0U);
    drag({300, 300}, {200, 300});
    EXPECT_GT(chart().center().longitude, 10) << "the chart has the mouse again";
}

TEST(SheetLine, RunsOnAcrossTheDateLineAndShowsOnBothSides)
{
    SheetLine line;
    line.addLeg({.longitude = 179.9, .latitude = 0}, {.longitude = -179.9, .latitude = 0});
    for (const double middle : {179.95, -179.95}) {
        const auto frame = ViewFrame::at(Position{.longitude = middle, .latitude = 0}, 500'000, 0,
                                         800, 600, 1, 66);
        double length = 0;
        line.project(SheetToPoints(frame), 10, [&](const QPolygonF& part) {
            length += QLineF(part.first(), part.last()).length();
        });
        // 0.2 degrees are 22.26 km, at 1:500 000 and 66 dots an inch 115.7 points.
        EXPECT_NEAR(length, 115.7, 1) << middle;
    }
}

// A leg over an ocean, drawn to its end, held the window up for seconds.
TEST(SheetLine, IsCutNearTheViewAndStaysWhereItWas)
{
    SheetLine line;
    line.add({.longitude = -60, .latitude = 0});
    line.add({.longitude = 60, .latitude = 0});
    const auto frame =
        ViewFrame::at(Position{.longitude = 0, .latitude = 0}, 50'000, 30, 800, 600, 1, 66);
    int parts = 0;
    line.project(SheetToPoints(frame), 10, [&](const QPolygonF& part) {
        ++parts;
        for (const QPointF& p : part)
            EXPECT_LT(std::hypot(p.x() - 400, p.y() - 300), 1100);
        // Turned by 30 degrees about the middle, the equator passes it still.
        const QLineF drawn(part.first(), part.last());
        EXPECT_NEAR(QLineF(drawn.p1(), QPointF(400, 300)).length()
                        + QLineF(QPointF(400, 300), drawn.p2()).length(),
                    drawn.length(), 0.01);
        EXPECT_NEAR(std::fmod(drawn.angle() + 180, 180), 30, 0.01);
    });
    EXPECT_EQ(parts, 1);
}

TEST(SheetLine, LeavesOutWhatCannotBeSeen)
{
    SheetLine line;
    for (int i = 0; i <= 10'000; ++i)
        line.add({.longitude = i / 1000.0, .latitude = 50});
    const auto frame =
        ViewFrame::at(Position{.longitude = 5, .latitude = 50}, 50'000, 0, 800, 600, 1, 66);
    qsizetype points = 0;
    line.project(SheetToPoints(frame), 10, [&](const QPolygonF& part) { points += part.size(); });
    EXPECT_GT(points, 10);
    EXPECT_LT(points, 400) << "a view of a quarter of a degree shows a fortieth of the line";
}

} // namespace
} // namespace kelvox
