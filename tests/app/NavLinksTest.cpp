#include "app/NavScene.h"

#include "positioning/NMEA.h"

namespace kelvox {
namespace {

class NavLinksTest : public NavScene {
protected:
    void hear(const std::string& body)
    {
        unsigned sum = 0;
        for (const char c : body)
            sum ^= static_cast<unsigned char>(c);
        char ending[8];
        std::snprintf(ending, sizeof ending, "*%02X\r\n", sum);
        program.live().gps().handle("$" + body + ending);
        QApplication::processEvents();
    }
    [[nodiscard]] const WaypointController& steering() { return program.waypointController(); }
    static constexpr const char* here = "GPRMC,120000,A,5500.000,N,01000.000,E,6.0,090.0,010126,,";
    static constexpr const char* steerToBuoy =
        "GPRMB,A,0.05,R,START,BUOY,5506.000,N,01006.000,E,6.9,030.0,5.0,V";
};

TEST_F(NavLinksTest, TheReceiversWaypointBecomesActiveAndIsMadeOnce)
{
    hear(here);
    for (int i = 0; i < 5; ++i)
        hear(steerToBuoy);
    ASSERT_TRUE(steering().hasActiveWaypoint());
    EXPECT_EQ(steering().activeWaypointName(), "BUOY");
    EXPECT_TRUE(steering().isGotoWaypointFromGPS());
    EXPECT_EQ(program.waypoints().count(), 1U) << "it says so every second";
    EXPECT_NEAR(steering().gotoWaypoint()->latitude, 55.1, 1e-4);

    hear("GPRMB,A,0.05,R,START,BUOY,5512.000,N,01006.000,E,6.9,030.0,5.0,V");
    for (int i = 0; i < 5; ++i)
        hear("GPRMB,A,0.05,R,START,BUOY,5512.000,N,01006.000,E,6.9,030.0,5.0,V");
    EXPECT_EQ(program.waypoints().count(), 2U) << "moved: another one, once";
}

TEST_F(NavLinksTest, AnAlarmThatHasSoundedIsNotArmedByTheNextSentence)
{
    hear(here);
    hear(steerToBuoy);
    program.waypointController().setWaypointArrivalAlarm(false);
    hear(steerToBuoy);
    EXPECT_FALSE(steering().isWaypointArrivalAlarmOn());
}

TEST_F(NavLinksTest, TheUsersOwnWaypointStays)
{
    hear(here);
    const auto mine = waypoint("MINE", {400, 300});
    actions().gotoWaypoint(mine);
    hear(steerToBuoy);
    EXPECT_EQ(steering().gotoWaypoint(), mine);
    EXPECT_EQ(program.waypoints().count(), 1U);
}

TEST_F(NavLinksTest, TheSimulatedVesselTurnsToTheWaypointOnlyWhenAsked)
{
    hear(here);
    auto& simulator = program.live().simulator();
    simulator.setPosition({.longitude = 10, .latitude = 55});
    simulator.setHeading(0);
    simulator.setRunning(true);
    const auto east = waypoint("EAST", {900, 350});
    actions().gotoWaypoint(east);
    (void)simulator.nextLines();
    EXPECT_NEAR(simulator.heading(), 0, 1);
    program.settings().set("simulatorSteersToWaypoint", true);
    for (int i = 0; i < 20; ++i)
        (void)simulator.nextLines();
    EXPECT_GT(simulator.heading(), 45);
    EXPECT_LT(simulator.heading(), 135);
    simulator.setRunning(false);
}

TEST_F(NavLinksTest, DeletingTheRouteThatIsFollowedStopsNavigating)
{
    hear(here);
    const auto trip = route("Trip", {waypoint("A", {300, 300}), waypoint("B", {600, 300})});
    actions().followRoute(trip);
    ASSERT_TRUE(steering().hasActiveWaypoint());
    program.routes().remove(trip);
    QApplication::processEvents();
    EXPECT_FALSE(steering().hasActiveWaypoint());
}

} // namespace
} // namespace kelvox
