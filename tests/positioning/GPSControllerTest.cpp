#include "positioning/Vessel.h"

#include "navigation/NavMath.h"
#include "positioning/Damper.h"
#include "positioning/OwnVessel.h"
#include "support/RealData.h"

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <map>

namespace kelvox {
namespace {

using Outcome = Verdict::Outcome;
using Texts = std::vector<std::string>;
constexpr auto fixAtBerlin = "$GPRMC,123456,A,5230.000,N,01315.000,E,6.0,100.0,090324,,";

TEST(Damper, CoursesAroundNorthAndSharpTurns)
{
    Damper damper(4);
    EXPECT_FLOAT_EQ(damper.averageCourse(358), 358);
    EXPECT_FLOAT_EQ(damper.averageCourse(359), 358.5F);
    EXPECT_NEAR(damper.averageCourse(1), 359.0 + 1.0 / 3, 1e-4);
    EXPECT_FLOAT_EQ(damper.averageCourse(90), 90) << "a sharp turn restarts the average";

    Damper full(2);
    (void)full.averageCourse(10);
    (void)full.averageCourse(20);
    EXPECT_FLOAT_EQ(full.averageCourse(30), 20) << "over one more than is kept";
    EXPECT_EQ(full.count(), 2U);
    EXPECT_NEAR(full.averageCourse(355), 15, 1e-3) << "20, 30 and 5 degrees west of north";

    Damper speeds(0);
    (void)speeds.averageSpeed(4);
    EXPECT_FLOAT_EQ(speeds.averageSpeed(8), 8);
}

TEST(GPSController, AcceptsAndRefusesFixes)
{
    struct Case {
        const char* sentence;
        bool plotted;
        const char* why;
    };
    const Case cases[] = {
        {"$GPGGA,123456,5230.000,N,01315.000,E,2,08,1.0,100.0,M,,,,", true, "differential"},
        {"$GPGGA,123456,5230.000,N,01315.000,E,0,08,1.0,100.0,M,,,,", false, "no fix"},
        {"$GNRMC,123456,A,5230.000,N,01315.000,E,6.0,100.0,090324,,", true, "other talker"},
        {"$IIRMC,123456,V,5230.000,N,01315.000,E,6.0,100.0,090324,,", false, "warning"},
        {"$GPRMC,123456,,5230.000,N,01315.000,E,6.0,100.0,090324,,", true, "status not given"},
        {"$GPGLL,5230.000,N,01315.000,E", true, "no time, no status"},
        {"$GPGLL,5230.000,N,,E,123456,A", false, "half a position"},
        {"$GPGLL,5230.000,N,18000.000,E,123456,A", false, "on the date line"},
        {"$GPGLL,9000.000,S,01315.000,E,123456,A", false, "at the pole"},
        {"$GPGLL,5230.000,X,01315.000,E,123456,A", false, "no such hemisphere"},
    };
    for (const auto& test : cases) {
        Vessel vessel;
        EXPECT_EQ(vessel.take(test.sentence).outcome, Outcome::Accepted) << test.why;
        EXPECT_EQ(vessel.plotted.size(), test.plotted ? 1U : 0U) << test.why;
        EXPECT_EQ(vessel.posted.size(), test.plotted ? 1U : 0U) << test.why;
        if (test.plotted) {
            EXPECT_NEAR(vessel.gps.position().latitude, 52.5, 1e-5) << test.why;
            EXPECT_NEAR(vessel.gps.position().longitude, 13.25, 1e-5) << test.why;
        }
    }
    Vessel lost;
    lost.take(fixAtBerlin);
    lost.take("$GPGGA,123456,5230.000,N,01315.000,E,0,08,1.0,100.0,M,,,,");
    EXPECT_FALSE(lost.gps.position().isKnown());
    Vessel edge;
    edge.take("$GPGLL,5230.000,N,18000.000,E,123456,A");
    EXPECT_EQ(edge.gps.position().longitude, 180) << "stored all the same";
    edge.take("$GPGLL,5950000000000002.799,N,01039.600,E");
    EXPECT_EQ(edge.gps.latitude(), "") << "a figure too large to be written as degrees";
}

TEST(GPSController, DropsWhatIsNotForIt)
{
    Vessel vessel;
    EXPECT_EQ(vessel.gps.processRawSentence("$GPGLL,5230.0,N,01315.0,E*00\r\n").reason,
              "checksum wrong");
    EXPECT_EQ(vessel.gps.processRawSentence("\x01\x02$GPGLL,5230.0,N,01315.0,E\r\n").outcome,
              Outcome::Accepted);
    EXPECT_EQ(vessel.take("$PGRMC,1").reason, "proprietary");
    EXPECT_EQ(vessel.take("$GPXXX,1").outcome, Outcome::Unknown);
    EXPECT_EQ(vessel.gps.processRawSentence("").outcome, Outcome::Dropped);
}

TEST(GPSController, CourseAndSpeed)
{
    Vessel vessel;
    vessel.take("$GPVTG,100.0,T,,M,5.0,N,,K");
    vessel.take("$GPRMC,123456,A,5230.000,N,01315.000,E,0.2,123.0,090324,,");
    EXPECT_FLOAT_EQ(vessel.gps.speedOverGround(), 0.2F);
    EXPECT_FLOAT_EQ(vessel.gps.courseOverGround(), 100) << "too slow for a course";

    vessel.compass.variation = -3.5F;
    vessel.take("$GPVTG,,T,353.54,M,6.0,N,,K");
    EXPECT_FLOAT_EQ(vessel.gps.courseOverGround(), 350) << "magnetic, with the variation";
    vessel.take("$GPVTG,,T,,M,,N,,K");
    EXPECT_FLOAT_EQ(vessel.gps.speedOverGround(), 6) << "empty fields leave it alone";
}

TEST(GPSController, VariationFromTheSentenceElseFromTheModel)
{
    Vessel vessel;
    vessel.take("$GPRMC,123456,A,5230.000,N,01315.000,E,6.0,100.0,090324,3.5,W");
    EXPECT_FLOAT_EQ(vessel.compass.variation, -3.5F);
    vessel.take(fixAtBerlin);
    EXPECT_NEAR(vessel.compass.variation, 4.9, 0.7) << "Berlin, spring 2024, degree 9";
}

TEST(GPSController, BroadcastsAtMostEveryTwoSeconds)
{
    Vessel vessel;
    vessel.take("$GPVTG,100.0,T,,M,5.5,N,,K");
    for (int second = 0; second < 4; ++second) {
        vessel.take("$GPGLL,5230.000,N,01315.000,W,123456,A");
        vessel.clock.advance(std::chrono::seconds(1));
    }
    EXPECT_EQ(vessel.posted,
              Texts(2, "gpsPosition -13.250000 52.500000 5.500000 100.000000 -1000.000000"));
    vessel.notification.postGPSPosition({}, -1000, -1000);
    EXPECT_EQ(vessel.posted.size(), 3U) << "no position goes out at once";
    vessel.companion = false;
    vessel.notification.postGPSPosition({}, -1000, -1000);
    EXPECT_EQ(vessel.posted.size(), 3U) << "nobody listens";
}

TEST(GPSController, LostPositionAlarmEveryNinetySeconds)
{
    Vessel vessel;
    const Texts alarm = {"sound Buzz", "show NSNoGPSPositionData"};
    const auto after = [&vessel](int seconds) {
        vessel.clock.advance(std::chrono::seconds(seconds));
        vessel.gps.positionTimer();
        return vessel.takeSaid();
    };
    vessel.take(fixAtBerlin);
    EXPECT_EQ(after(200), Texts()) << "no connection";
    vessel.gps.setConnectionState({.gpsOpen = true});
    EXPECT_EQ(after(89), Texts());
    EXPECT_EQ(after(1), alarm);
    EXPECT_FALSE(vessel.plotted.back().isKnown());
    EXPECT_EQ(after(89), Texts());
    EXPECT_EQ(after(1), alarm) << "again";
    vessel.take(fixAtBerlin);
    EXPECT_EQ(after(89), Texts()) << "a fix starts anew";
    vessel.gps.setConnectionState({.gpsOpen = true, .readingLogFile = true});
    EXPECT_EQ(after(200), Texts());
    vessel.gps.setConnectionState({.instrumentsOpen = true});
    EXPECT_EQ(after(200), Texts()) << "the GPS has a port of its own";
    vessel.settings.set("type", 5LL);
    vessel.gps.loadSettings();
    EXPECT_EQ(after(1), (Texts{"sound Buzz", "show NSNoAISPositionData"}));
}

TEST(GPSController, AnchorAlarmFiresOnceAndSoundsUntilClosed)
{
    Vessel vessel;
    vessel.gps.setAnchorAlarm(true);
    EXPECT_FALSE(vessel.gps.anchorAlarm()) << "no position to anchor at";
    vessel.settings.set("audio", true);
    vessel.settings.set("visual", true);
    vessel.settings.set("alarmSound", std::string("Bell"));
    vessel.settings.set("anchorDragDistance", 0.5);
    vessel.take("$GPGLL,0000.000,N,01000.000,E");
    vessel.gps.setAnchorAlarm(true);
    vessel.take("$GPGLL,0000.499,N,01000.000,E");
    EXPECT_EQ(vessel.takeSaid(), Texts());
    vessel.take("$GPGLL,0000.501,N,01000.000,E"); // one minute of latitude is one mile
    EXPECT_EQ(vessel.takeSaid(),
              (Texts{"sound Bell", "speak NSAnchorAlarm", "show NSAnchorAlarm"}));
    EXPECT_FALSE(vessel.gps.anchorAlarm());
    vessel.take("$GPGLL,0000.600,N,01000.000,E");
    vessel.clock.advance(std::chrono::seconds(9));
    vessel.gps.positionTimer();
    EXPECT_EQ(vessel.takeSaid(), Texts());
    vessel.clock.advance(std::chrono::seconds(1));
    vessel.gps.positionTimer();
    EXPECT_EQ(vessel.takeSaid(), (Texts{"sound Bell", "speak NSAnchorAlarm"}));
    vessel.gps.anchorAlertClosed();
    vessel.clock.advance(std::chrono::seconds(60));
    vessel.gps.positionTimer();
    EXPECT_EQ(vessel.takeSaid(), Texts());
}

TEST(GPSController, AnchorAlarmAtExactlyTheDragDistance)
{
    const Position there{.longitude = 10, .latitude = 0.5};
    Vessel vessel;
    vessel.settings.set("audio", true);
    vessel.settings.set(
        "anchorDragDistance",
        static_cast<double>(NavMath::distanceFromPoint(there, {.longitude = 10, .latitude = 0})));
    vessel.take("$GPGLL,0000.000,N,01000.000,E");
    vessel.gps.setAnchorAlarm(true);
    vessel.take("$GPGLL,0029.990,N,01000.000,E");
    EXPECT_EQ(vessel.takeSaid(), Texts());
    vessel.take("$GPGLL,0030.000,N,01000.000,E");
    EXPECT_EQ(vessel.takeSaid(), Texts({"speak NSAnchorAlarm"}));
}

TEST(GPSController, WaypointAndRouteSentences)
{
    Vessel vessel;
    vessel.take("$GPRMB,A,0.66,L,003,004,4917.24,N,12309.57,W,001.3,052.5,000.5,V");
    vessel.take("$GPWPL,4917.160,N,12310.640,W,003");
    vessel.take("$GPWPL,9917.160,N,12310.640,W,004"); // beyond the pole
    vessel.take("$GPXTE,A,A,0.67,R,N");
    vessel.take("$GPRTE,2,1,c,0,W3IWI,DRIVWY");
    vessel.take("$GPBOD,045.0,T,023.3,M,DEST,START");
    EXPECT_EQ(vessel.displays,
              (Texts{"xte 0.66 L", "waypoint 004 49.29,-123.16 52.5 1.3 0.5",
                     "stored 003 49.286,-123.177", "xte 0.67 R"}))
        << "route sentences wait for an active goto";
    vessel.displays.clear();

    vessel.gps.setGotoActive(true);
    vessel.take("$GPRTE,2,1,c,0,W3IWI,DRIVWY");
    vessel.take("$GPRTE,2,2,C,0,32CEDR");
    vessel.take("$GPBOD,045.0,T,023.3,M,DEST,START");
    vessel.take("$GPRMB,A,,,,,,,,,,,,V");
    EXPECT_EQ(vessel.displays, (Texts{"route 0 W3IWI DRIVWY 32CEDR", "leg START DEST"}));
    vessel.clock.advance(std::chrono::seconds(60));
    vessel.gps.waypointTimer();
    EXPECT_EQ(vessel.displays.back(), "waypoint gone");
}

TEST(GPSController, BWCVelocityIsMadeGoodTowardsItsWaypoint)
{
    Vessel vessel;
    vessel.take("$GPGLL,0000.000,N,01000.000,E");
    vessel.take("$GPVTG,060.0,T,,M,10.0,N,,K");
    vessel.displays.clear();
    vessel.take("$GPBWC,081837,0000.000,N,01100.000,E,090.0,T,090.0,M,60.0,N,WP1");
    // 10 knots on 060 towards 090: 10 cos 30.
    ASSERT_EQ(vessel.displays.size(), 1U);
    EXPECT_EQ(vessel.displays[0].substr(0, 35), "waypoint WP1 0.00,11.00 90 60 8.660");
}

TEST(GPSController, SatellitesOfSeveralSentences)
{
    Vessel vessel;
    const auto numbers = [&vessel] {
        std::string text;
        for (const auto& satellite : vessel.gps.satelliteView().satellites)
            text += fmt::format("{}:{} ", satellite.number, satellite.signal);
        return text;
    };
    vessel.take("$GPGSV,2,1,05,01,40,083,46,02,17,308,41,12,07,344,39,14,22,228,45");
    vessel.take("$GPGSV,2,2,05,22,10,100,");
    EXPECT_EQ(numbers(), "1:46 2:41 12:39 14:45 22:0 ");
    vessel.take("$GPGSV,1,1,01,07,40,083,30");
    EXPECT_EQ(numbers(), "7:30 ");
    for (int i = 0; i < 100; ++i)
        vessel.take("$GPGSV,9,2,99,01,40,083,46,02,17,308,41,12,07,344,39,14,22,228,45");
    EXPECT_LE(vessel.gps.satelliteView().satellites.size(), 128U) << "never a first sentence";
    vessel.take("$GPGSA,A,3,04,05,,09,12,,,24,,,,,2.5,1.3,2.1");
    EXPECT_EQ(vessel.gps.satelliteView().inUse, (std::vector<int>{4, 5, 9, 12, 24}));
    EXPECT_FLOAT_EQ(vessel.gps.satelliteView().vdop, 2.1F);
}

TEST(GPSController, TrackPointsCarryTheInstrumentsLastValues)
{
    Vessel vessel;
    vessel.settings.set("instruments.useGPSPort", true);
    vessel.instruments.loadSettings();
    vessel.take("$IIDBT,30.5,f");
    vessel.take("$IIHDT,123.0,T");
    vessel.take(fixAtBerlin);
    ASSERT_EQ(vessel.track.size(), 1U);
    EXPECT_FLOAT_EQ(vessel.track[0].depthFeet, 30.5F);
    EXPECT_FLOAT_EQ(vessel.track[0].headingDegrees, 123);
    EXPECT_FLOAT_EQ(vessel.track[0].temperatureF, -1000);
}

TEST(GPSController, RealLogEndsWhereItsLastSentencesSay)
{
    const auto path = realData("nmea/plaka.log");
    if (!path)
        GTEST_SKIP() << "KELVOX_DATA is not set";
    const SystemClock clock;
    OwnVessel vessel(clock);
    std::ifstream log(*path, std::ios::binary);
    std::string line;
    std::map<std::string_view, int> reasons;
    while (std::getline(log, line))
        ++reasons[vessel.gps.processRawSentence(line + '\n').reason];
    EXPECT_EQ(reasons.size(), 2U) << "each is accepted or not known, none is dropped";
    EXPECT_NEAR(vessel.gps.position().latitude, 59.85567, 1e-5);
    EXPECT_NEAR(vessel.gps.position().longitude, 23.39902, 1e-5);
}

} // namespace
} // namespace kelvox
