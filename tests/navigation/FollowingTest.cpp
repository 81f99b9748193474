#include "Scene.h"
#include "navigation/RouteController.h"
#include "navigation/TrackController.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace kelvox {
namespace {

using namespace std::chrono_literals;

constexpr double degree = M_PI / 180;

/// Writes down what the user would hear and see.
struct RecordedAlarms final : Alarms {
    void beep() override { log += "beep "; }
    void playSound(const std::string& name) override { log += "sound " + name + " "; }
    void speak(const std::string& text) override { log += "say " + text + " "; }
    void show(const Alert& alert) override
    {
        log += "show " + alert.message + ":" + alert.informativeText + ":" + alert.button + " ";
    }
    [[nodiscard]] bool isShown(const std::string& /*key*/) const override { return false; }
    std::string take() { return std::exchange(log, {}); }
    std::string log;
};

struct Bridge {
    explicit Bridge(double approach = 0.1, double crossTrack = 0.2)
    {
        settings.set("waypointApproachDistance", approach);
        settings.set("crossTrackDistance", crossTrack);
        settings.set("audio", true);
    }
    void fix(Position position)
    {
        waypoints.plotPosition(position);
        routes.plotPosition(position);
    }

    Scene scene;
    RecordedAlarms alarms;
    MemorySettings settings;
    Strings keys; // every key stands for itself
    WaypointController waypoints{scene.waypoints, alarms, settings, keys};
    RouteController routes{scene.routes, scene.waypoints, scene.tracks, waypoints};
};

/// So many miles east and north of a place near 10 E on the equator.
Position at(double eastNM, double northNM)
{
    return {10 + eastNM / 60, northNM / 60};
}

TEST(WaypointController, ArrivesByDistanceAndByPassingAbeam)
{
    Bridge bridge;
    const auto buoy = bridge.scene.waypoint("Buoy", at(10, 0));
    bridge.fix(at(0, 0));
    ASSERT_TRUE(bridge.waypoints.onWaypointGoto(buoy));
    EXPECT_TRUE(bridge.waypoints.isWaypointArrivalAlarmOn());
    EXPECT_EQ(bridge.waypoints.startPositionOnGPS(), at(0, 0));
    EXPECT_NEAR(bridge.waypoints.activeWaypointDistance(), 10, 0.01);
    bridge.fix(at(9.88, 0));
    EXPECT_FALSE(bridge.waypoints.waypointArrival());
    bridge.fix(at(9.901, 0));
    EXPECT_EQ(bridge.alarms.take(), "beep say NSWaypointArrivalAlarm ");
    bridge.fix(at(9.95, 0));
    EXPECT_EQ(bridge.alarms.take(), ""); // once per arming

    bridge.settings.set("visual", true);
    bridge.settings.set("audio", false);
    bridge.fix(at(0, 0.01));
    bridge.waypoints.onWaypointGoto(buoy);
    bridge.fix(at(9.9, 0.5)); // half a mile abeam, not yet past
    EXPECT_EQ(bridge.alarms.take(), "");
    bridge.fix(at(10.1, 0.5));
    EXPECT_EQ(bridge.alarms.take(), "show NSWaypointArrivalAlarm:Buoy:NSOK ");
}

TEST(WaypointController, RaisesTheCrossTrackAlarmOncePerArming)
{
    Bridge bridge;
    bridge.waypoints.setCrossTrackAlarm(true);
    EXPECT_FALSE(bridge.waypoints.isCrossTrackAlarmOn()); // refused without a position
    bridge.fix(at(0, 0));
    bridge.waypoints.onWaypointGoto(bridge.scene.waypoint("Buoy", at(10, 0)));
    bridge.waypoints.setCrossTrackAlarm(true);
    bridge.fix(at(5, -0.19));
    EXPECT_EQ(bridge.alarms.take(), "");
    EXPECT_EQ(bridge.waypoints.steer(), WaypointController::Steer::Left); // south is starboard
    // An error of exactly the limit counts.
    bridge.settings.set("crossTrackDistance",
                        std::abs(static_cast<double>(bridge.waypoints.activeWaypointCrossTrack())));
    EXPECT_TRUE(bridge.waypoints.crossTrack());
    bridge.fix(at(5, -0.25));
    EXPECT_EQ(bridge.alarms.take(), "beep say NSCrossTrackAlarm ");
    bridge.fix(at(5, -0.30));
    EXPECT_EQ(bridge.alarms.take(), "");
    bridge.waypoints.setCrossTrackAlarm(true);
    bridge.waypoints.setChartVisible([] { return false; });
    bridge.fix(at(5, 0.30));
    EXPECT_EQ(bridge.alarms.take(), ""); // waits for the chart window
    bridge.waypoints.setChartVisible([] { return true; });
    bridge.fix(at(5.1, 0.30));
    EXPECT_EQ(bridge.alarms.take(), "beep say NSCrossTrackAlarm ");
    EXPECT_EQ(bridge.waypoints.steer(), WaypointController::Steer::Right);
}

TEST(WaypointController, LosesItsGotoWithThePositionOrTheWaypoint)
{
    Bridge bridge;
    const auto buoy = bridge.scene.waypoint("Buoy", at(10, 0));
    bridge.fix(at(0, 0));
    bridge.waypoints.onWaypointGoto(buoy);
    bridge.fix({});
    EXPECT_FALSE(bridge.waypoints.hasActiveWaypoint());
    EXPECT_FALSE(bridge.waypoints.isWaypointArrivalAlarmOn());
    EXPECT_EQ(bridge.waypoints.activeWaypointDistance(), noValue);
    EXPECT_FALSE(bridge.waypoints.waypointArrival());
    EXPECT_EQ(bridge.waypoints.closestWaypointName(), "");

    bridge.waypoints.onWaypointGoto(buoy); // without a position: active, but no alarm
    EXPECT_FALSE(bridge.waypoints.isWaypointArrivalAlarmOn());
    bridge.waypoints.applicationWillSleep();
    bridge.fix(at(9.99, 0));
    EXPECT_FALSE(bridge.waypoints.waypointArrival()); // asleep: not even stored
    bridge.waypoints.applicationWillWake();
    bridge.fix(at(9.98, 0));
    EXPECT_TRUE(bridge.waypoints.waypointArrival());
    bridge.scene.waypoints.remove(buoy);
    bridge.fix(at(9.97, 0));
    EXPECT_FALSE(bridge.waypoints.hasActiveWaypoint());

    const auto other = bridge.scene.waypoint("Other", at(0, 10));
    bridge.waypoints.gotoWaypointFromGPS(other, at(0, 0));
    EXPECT_FALSE(bridge.waypoints.onWaypointGoto(bridge.scene.waypoint("Third")));
    EXPECT_EQ(bridge.waypoints.activeWaypointName(), "Other");
}

TEST(WaypointController, ShowsValuesOfTheActiveAndTheClosestWaypoint)
{
    Bridge bridge;
    bridge.scene.waypoint("Nowhere", Position{});
    bridge.scene.waypoint("Far", at(20, 0));
    const auto near = bridge.scene.waypoint("Near", at(6, 8));
    bridge.fix(at(0, 0));
    EXPECT_EQ(bridge.waypoints.closestWaypointName(), "Near");
    EXPECT_NEAR(bridge.waypoints.closestWaypointDistance(), 10, 0.01);
    EXPECT_NEAR(bridge.waypoints.closestWaypointBearing(), 36.87, 0.1);
    bridge.waypoints.onWaypointGoto(near);
    EXPECT_EQ(bridge.waypoints.activeWaypointTimeToGo(), 0); // course and speed unknown
    EXPECT_EQ(bridge.waypoints.activeWaypointVelocity(), noValue);
    bridge.waypoints.setCourseAndSpeed(36.87F + 60, 10);
    EXPECT_NEAR(bridge.waypoints.activeWaypointVelocity(), 5, 0.02);
    EXPECT_NEAR(bridge.waypoints.activeWaypointTimeToGo(), 2, 0.01);
    bridge.waypoints.fromWaypoints(0, 8);
    EXPECT_NEAR(near->timeToGoFromPosition, 10 / (8 * 0.8), 0.01);
}

TEST(RouteController, AdvancesOnceOnATwoWaypointRoute)
{
    Bridge bridge;
    bridge.scene.waypoint("A", at(1, 0));
    bridge.scene.waypoint("B", at(2, 0));
    const auto route = bridge.scene.route("R", "A B");
    bridge.fix(at(0, 0));
    ASSERT_TRUE(bridge.routes.onRouteGoto(route));
    bridge.routes.setAutoNext(true);
    EXPECT_EQ(bridge.waypoints.startPositionOnGPS(), at(0, 0));
    bridge.fix(at(0.95, 0));
    EXPECT_EQ(bridge.waypoints.activeWaypointName(), "B");
    EXPECT_EQ(bridge.waypoints.startPositionOnGPS(),
              bridge.scene.waypoints.waypointFromName("A")->positionOnGPS());
    EXPECT_TRUE(bridge.waypoints.isWaypointArrivalAlarmOn());
    EXPECT_FALSE(bridge.routes.autoNext());

    bridge.routes.onRouteGoto(route);
    bridge.routes.setAutoNext(true);
    bridge.fix({});
    EXPECT_FALSE(bridge.routes.autoNext());

    bridge.fix(at(0, 0));
    bridge.routes.onRouteGoto(route);
    bridge.routes.setAutoNext(true);
    const auto keepsIt = route->waypointReference(1);
    bridge.scene.waypoints.remove(bridge.scene.waypoints.waypointFromName("B"));
    bridge.scene.routes.edit(route, [&](Route& it) { it.addWaypointReference(keepsIt); });
    bridge.fix(at(0.95, 0));
    EXPECT_FALSE(bridge.routes.autoNext()); // the next waypoint has gone
    EXPECT_EQ(bridge.waypoints.activeWaypointName(), "A");
}

TEST(RouteController, MakesRoutesFromTracks)
{
    Bridge bridge;
    auto& tracks = bridge.scene.tracks;
    for (int i = 0; i < 100; ++i)
        tracks.add(trackPoint(i, at(0.05 * i, 0)), 1s);
    const auto straight = bridge.routes.onRouteNewFromTrack({});
    ASSERT_EQ(straight->count(), 2U);
    const auto place = [&](const Route& route, std::size_t i) {
        return route.waypointReference(i)->waypoint->positionOnGPS();
    };
    EXPECT_EQ(place(*straight, 0), tracks.track(0)->positionOnGPS());
    EXPECT_EQ(place(*straight, 1), tracks.track(98)->positionOnGPS());
    EXPECT_EQ(bridge.scene.waypoints.selectedGroup(), WaypointsModel::importedGroup);
    bridge.scene.history.undo();
    EXPECT_EQ(bridge.scene.waypoints.count() + bridge.scene.routes.count(), 0U);

    tracks.removeAll();
    for (int i = 0; i <= 40; ++i) // east for a mile, then north for one
        tracks.add(trackPoint(200 + i, at(std::min(i, 20) * 0.05, std::max(0, i - 20) * 0.05)), 1s);
    const auto bent = bridge.routes.onRouteNewFromTrack({tracks.track(3)}); // one alone is none
    ASSERT_GE(bent->count(), 3U);
    bool nearCorner = false;
    for (std::size_t i = 0; i < bent->count(); ++i)
        nearCorner = nearCorner || NavMath::distanceFromPoint(place(*bent, i), at(1, 0)) < 0.11;
    EXPECT_TRUE(nearCorner);
    EXPECT_EQ(bridge.routes.createRouteFromTrack({tracks.track(0)}), nullptr);
    bridge.scene.routes.setSelectedRoute(bent);
    EXPECT_EQ(Scene::through(*bridge.routes.createRouteFromSelectedRoute()), Scene::through(*bent));

    TrackController list(tracks);
    list.onTrackNew();
    EXPECT_TRUE(tracks.add(trackPoint(241), 900s));
    EXPECT_EQ(list.selectPosition(10, 0), tracks.track(0));
}

/// Flat geometry in double precision about the active leg, to judge the controllers by.
struct Leg {
    double along, across, left; ///< NM: from the start, to starboard, to the end along the leg
    double distance; ///< to the end

    Leg(Position start, Position end, Position vessel)
    {
        const double shrink = std::cos(end.latitude * degree);
        const double ex = (end.longitude - start.longitude) * 60 * shrink;
        const double ey = (end.latitude - start.latitude) * 60;
        const double vx = (vessel.longitude - start.longitude) * 60 * shrink;
        const double vy = (vessel.latitude - start.latitude) * 60;
        const double length = std::hypot(ex, ey);
        along = (vx * ex + vy * ey) / length;
        across = (vx * ey - vy * ex) / length;
        left = length - along;
        distance = std::hypot(ex - vx, ey - vy);
    }
};

TEST(RouteController, BringsAVesselAlongTenWaypointsInCurrentAndNoise)
{
    constexpr double approach = 0.05;
    constexpr double limit = 0.15;
    Bridge bridge(approach, limit);
    auto& goTo = bridge.waypoints;
    std::mt19937 random(42);
    std::normal_distribution<> noise(0, 0.002); // NM, about 4 m
    std::string names;
    // Turns to both sides, a leg due north, one due west, one that turns back sharply.
    const Position corners[] = {{10.05, 55.02}, {10.09, 55.02}, {10.09, 55.05}, {10.05, 55.05},
                                {10.03, 55.08}, {10.08, 55.10}, {10.05, 55.10}, {10.10, 55.13},
                                {10.10, 55.16}, {10.16, 55.15}};
    for (const auto& corner : corners)
        names += bridge.scene.waypoint("", corner)->name + " ";
    const auto route = bridge.scene.route("Tour", names);

    Position vessel{10.0, 55.0};
    double current = 0;
    double elapsed = 0; // hours
    std::size_t leg = 0;
    Position start{};
    int arrivals = 0;
    int passedAbeam = 0;
    int crossAlarms = 0;
    int steered = 0;
    bool crossArmed = false;
    for (int second = 0; second < 40'000; second += 2, elapsed += 2.0 / 3600) {
        const double shrink = std::cos(vessel.latitude * degree);
        const Position fix{vessel.longitude + noise(random) / 60 / shrink,
                           vessel.latitude + noise(random) / 60};
        bridge.fix(fix);
        if (second == 0) {
            ASSERT_TRUE(bridge.routes.onRouteGoto(route));
            bridge.routes.setAutoNext(true);
            start = fix;
        }
        SCOPED_TRACE(testing::Message() << "second " << second << ", leg " << leg);

        // Advance: on the first fix that arrives by our own geometry, and on no other.
        const Leg before(start, corners[leg], fix);
        const bool last = leg + 1 == std::size(corners);
        const bool must = before.distance < approach - 0.003
            || (before.left < -0.02 - 0.07 * std::abs(before.across) && before.along > 0.1);
        const bool may = before.distance < approach + 0.003
            || before.left < 0.02 + 0.07 * std::abs(before.across);
        const auto heard = bridge.alarms.take();
        const bool arrivalHeard = heard.find("NSWaypointArrivalAlarm") != std::string::npos;
        const bool advanced =
            bridge.routes.gotoWaypointReference() != route->waypointReference(leg);
        ASSERT_TRUE(!must || arrivalHeard);
        ASSERT_TRUE(!arrivalHeard || may);
        ASSERT_EQ(advanced, arrivalHeard && !last);
        if (arrivalHeard) {
            ++arrivals;
            passedAbeam += before.distance > approach + 0.003;
            if (last)
                break;
            start = route->waypointReference(leg)->waypoint->positionOnGPS();
            ++leg;
            ASSERT_EQ(goTo.activeWaypointName(), route->waypointReference(leg)->waypoint->name);
            ASSERT_EQ(goTo.startPositionOnGPS(), start);
            ASSERT_TRUE(goTo.isWaypointArrivalAlarmOn());
            ASSERT_EQ(bridge.routes.autoNext(), leg + 1 != std::size(corners));
        }

        // Cross-track alarm and steer side on the leg as it is now.
        const Leg now(start, corners[leg], fix);
        const double error = std::abs(now.across);
        // What single precision can tell: on legs near north and south its bearings are coarse.
        const double eastward =
            std::abs(std::sin(NavMath::bearingFromPoint(start, corners[leg]) * degree));
        const double blur = eastward < 0.4 ? 0.07 : 0.02;
        const bool crossHeard = heard.find("NSCrossTrackAlarm") != std::string::npos;
        if (!advanced && second > 0) {
            ASSERT_TRUE(!crossArmed || crossHeard || error < limit + blur);
            ASSERT_TRUE(!crossHeard || (crossArmed && error > limit - blur));
        }
        crossAlarms += crossHeard;
        crossArmed = crossArmed && !crossHeard;
        if (error < 0.05 && !crossArmed) {
            goTo.setCrossTrackAlarm(true);
            crossArmed = true;
        }
        if (error > blur) {
            ++steered;
            ASSERT_EQ(goTo.steer() == WaypointController::Steer::Left, now.across > 0)
                << "we say " << goTo.activeWaypointCrossTrack() << ", it is " << now.across
                << " abreast of " << now.along;
        }

        // The helmsman holds the bearing of the leg, corrected towards the side we say.
        const double along = NavMath::bearingFromPoint(start, corners[leg]);
        const double correction =
            std::min(40.0, std::abs(static_cast<double>(goTo.activeWaypointCrossTrack())) * 600);
        const double course =
            along + (goTo.steer() == WaypointController::Steer::Left ? -1 : 1) * correction;
        current =
            second % 2400 < 500 ? 9 : 1; // knots of current east and south, at times a torrent
        const double hours = 2.0 / 3600;
        vessel.longitude += (8 * std::sin(course * degree) + current) * hours / 60 / shrink;
        vessel.latitude += (8 * std::cos(course * degree) - current) * hours / 60;
    }
    EXPECT_EQ(arrivals, 10);
    EXPECT_GT(passedAbeam, 0);
    EXPECT_GT(crossAlarms, 1);
    EXPECT_GT(steered, 50);
}

} // namespace
} // namespace kelvox
