#include "navigation/RouteEditor.h"

#include "navigation/RoutePlan.h"
#include "navigation/Scene.h"
#include "navigation/TrackLines.h"

#include <gtest/gtest.h>

namespace kelvox {
namespace {

class RouteEditorTest : public ::testing::Test {
protected:
    RouteEditorTest()
    {
        for (const char* name : {"A", "B", "C", "D"})
            scene.waypoint(name, {10.0 + (name[0] - 'A'), 0});
    }
    /// The edit is one step: one undo brings back what was there.
    void expectOneStep(const std::function<void()>& edit)
    {
        const std::string before = all();
        const auto waypoints = scene.waypoints.count();
        edit();
        EXPECT_NE(all(), before);
        scene.history.undo();
        EXPECT_EQ(all(), before);
        EXPECT_EQ(scene.waypoints.count(), waypoints);
        scene.history.redo();
    }
    [[nodiscard]] std::string all() const
    {
        std::string text;
        for (const auto& route : scene.routes.objectEnumerator())
            text += route->name + ": " + Scene::through(*route) + "\n";
        return text;
    }
    [[nodiscard]] WaypointPointer named(const char* name) const
    {
        return scene.waypoints.waypointFromName(name);
    }

    Scene scene;
    RouteEditor editor{scene.waypoints, scene.routes};
};

TEST_F(RouteEditorTest, MakesAndLengthensRoutesThroughOldAndNewWaypoints)
{
    RoutePointer route;
    expectOneStep([&] { route = editor.makeRoute({{{}, named("A")}, {{11, 1}, nullptr}}); });
    EXPECT_EQ(all(), "RT0001: A WP0001\n");
    expectOneStep([&] { editor.extend(route, {{{12, 1}, nullptr}, {{}, named("C")}}); });
    EXPECT_EQ(all(), "RT0001: A WP0001 WP0002 C\n");
    EXPECT_FALSE(editor.makeRoute({{{}, named("A")}})) << "one point is no route";
}

TEST_F(RouteEditorTest, InsertsIntoTheLegThatWasPulled)
{
    const auto route = scene.route("Trip", "A B C");
    expectOneStep([&] { editor.insertIntoLeg(route, 1, {{11.5, 1}, nullptr}); });
    EXPECT_EQ(all(), "Trip: A B WP0001 C\n");
    EXPECT_FALSE(editor.insertIntoLeg(route, 3, {{11.5, 1}, nullptr})) << "behind the last";
    EXPECT_EQ(scene.waypoints.count(), 5U);
}

TEST_F(RouteEditorTest, SplitsAtAWaypointThatBelongsToBothAndJoinsAgain)
{
    const auto route = scene.route("Trip", "A B C D");
    RoutePointer second;
    expectOneStep([&] { second = editor.split(route, 2); });
    EXPECT_EQ(all(), "Trip: A B C\nRT0001: C D\n");
    expectOneStep([&] { EXPECT_TRUE(editor.join(route, second)); });
    EXPECT_EQ(all(), "Trip: A B C D\n") << "C is passed once";
    EXPECT_FALSE(editor.split(route, 0));
    EXPECT_FALSE(editor.split(route, 3));
    EXPECT_FALSE(editor.join(route, route));
}

TEST_F(RouteEditorTest, ARouteThatPassesAWaypointTwiceLosesOnlyTheChosenOne)
{
    const auto route = scene.route("Round", "A B C A");
    expectOneStep([&] { editor.removeFromRoute(route, 0); });
    EXPECT_EQ(all(), "Round: B C A\n");
    expectOneStep([&] { editor.moveUp(route, 2); });
    EXPECT_EQ(all(), "Round: B A C\n");
    expectOneStep([&] { editor.moveDown(route, 0); });
    EXPECT_EQ(all(), "Round: A B C\n");
    editor.moveUp(route, 0);
    editor.moveDown(route, 2);
    EXPECT_EQ(all(), "Round: A B C\n");
}

TEST_F(RouteEditorTest, ACopyDoesNotFollowItsModel)
{
    const auto route = scene.route("Trip", "A B");
    const auto copy = editor.copy(route);
    editor.removeFromRoute(route, 0);
    EXPECT_EQ(all(), "Trip: B\nRT0001: A B\n");
}

TEST_F(RouteEditorTest, WaypointsLeaveTheirRoutesInOneStep)
{
    (void)scene.route("Trip", "A B C");
    expectOneStep([&] { editor.removeWaypoints({named("A"), named("C")}); });
    EXPECT_EQ(all(), "Trip: B\n");
}

TEST_F(RouteEditorTest, HistoryTellsWhetherAStepIsStillTheLast)
{
    (void)scene.route("Trip", "A B");
    const auto then = scene.history.revision();
    EXPECT_EQ(scene.history.revision(), then);
    scene.history.undo();
    EXPECT_NE(scene.history.revision(), then);
    scene.history.redo();
    EXPECT_NE(scene.history.revision(), then) << "a step taken back and made again is another";
}

TEST_F(RouteEditorTest, ThePlanAddsUpLegsAndHours)
{
    // On the equator a degree is 60 NM; the module's own rounding makes it 59.9996.
    auto route = scene.route("Trip", "A B D");
    const auto plan = RoutePlan::of(*route, 6);
    ASSERT_EQ(plan.rows.size(), 3U);
    EXPECT_FALSE(isKnown(plan.rows[0].legMiles));
    EXPECT_FALSE(isKnown(plan.rows[0].bearingTrue));
    EXPECT_NEAR(plan.rows[1].legMiles, 60, 0.01);
    EXPECT_NEAR(plan.rows[2].legMiles, 120, 0.01);
    EXPECT_NEAR(plan.rows[2].totalMiles, 180, 0.01);
    EXPECT_NEAR(plan.rows[2].bearingTrue, 90, 0.1);
    EXPECT_NEAR(plan.rows[2].legHours, 20, 0.01);
    EXPECT_NEAR(plan.rows[2].totalHours, 30, 0.01);
    EXPECT_FALSE(isKnown(RoutePlan::of(*route, 0).rows[2].totalHours));
}

TEST(TrackLines, EndAtPausesAndAtChangesOfColour)
{
    Scene scene;
    const auto record = [&](int second, double longitude, float red) {
        Track point;
        point.set({longitude, 0}, Date(std::chrono::seconds(second)), 0, 0, 0, 0, 0, 0, 0, 0, {},
                  {.red = red});
        scene.tracks.add(std::move(point), std::chrono::seconds(1));
    };
    record(0, 10, 0);
    record(600, 10.1, 0);
    record(1200, 10.2, 0); // an hour's pause follows
    record(4800, 10.2, 0);
    record(4900, 10.2, 1);
    const auto lines = trackLines(scene.tracks);
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_EQ(lines[0].count, 3U);
    EXPECT_NEAR(lines[0].miles, 12, 0.01) << "the way over the pause does not count";
    EXPECT_NEAR(lines[0].hours(), 1.0 / 3, 1e-5);
    EXPECT_NEAR(lines[0].knots(), 36, 0.01);
    EXPECT_EQ(lines[1].first, 3U);
    EXPECT_FALSE(isKnown(lines[1].knots())) << "one point";
    EXPECT_EQ(lines[2].color.red, 1);
}

} // namespace
} // namespace kelvox
