#include "ais/AISFixture.h"

#include <gtest/gtest.h>

#include <span>

namespace kelvox {
namespace {

// A mile is 0.0167 degrees, at the equator in longitude as well.
constexpr Position own{.longitude = 0, .latitude = 0};

struct RadarCase {
    const char* sentence;
    float heading;
    const char* expected; ///< longitude, latitude, speed, course, heading
    const char* why;
};

void expectFirst(std::span<const RadarCase> cases)
{
    for (const auto& test : cases) {
        AISBench bench;
        bench.compass.headingTrue = test.heading;
        bench.controller.plotPosition(own);
        bench.controller.plotCourse(90);
        bench.sentence(test.sentence);
        EXPECT_EQ(bench.first(), test.expected) << test.why;
    }
}

TEST(Radar, TrackedTargetsByDistanceAndBearing)
{
    const RadarCase cases[] = {
        {"$RATTM,01,0.50,90.0,R,8.2,270.0,T,0.12,3.4,N,TGT01,T,,120000.00,M", 45,
         "0.0059 -0.0059 8.2 270.0 -", "off the starboard beam"},
        {"$RATTM,01,3.00,90.0,R,5.0,45.0,R,,,N,,T,,,M", 315, "0.0354 0.0354 5.0 0.0 -",
         "course relative as well"},
        {"$RATTM,01,3.00,45.0,R,5.0,45.0,T,,,N,,T,,,M", -1000, "0.0354 -0.0354 5.0 45.0 -",
         "no compass: relative to the course, which is east"},
        {"$RATTM,01,5.556,225.0,T,18.52,0.0,T,,,K,,Q,,,A", 0, "-0.0354 -0.0354 10.0 0.0 -",
         "kilometres"},
        {"$RATTM,01,3.4523,315,T,,,T,,,S,,T", 0, "-0.0354 0.0354 - - -",
         "statute miles, no movement, older equipment ends early"},
    };
    expectFirst(cases);
}

TEST(Radar, CursorFollowsTheDisplayRotation)
{
    const RadarCase cases[] = {
        {"$RARSD,0.00,0.0,1.50,45.0,2.00,10.0,0.75,90.0,3.00,225.0,6.0,N,H", 90,
         "-0.0354 0.0354 - - -", "head up"},
        {"$RARSD,,,,,,,,,3.00,225.0,6.0,N,C", 0, "-0.0354 0.0354 - - -", "course up"},
        {"$RARSD,,,,,,,,,3.00,225.0,6.0,N,N", 90, "-0.0354 -0.0354 - - -", "north up"},
        {"$RARSD,,,,,,,,,3.00,225.0", 90, "-0.0354 0.0354 - - -", "head up when it does not say"},
        {"$RARSD,,,,,,,,,,225.0,6.0,N,H", 90, "nothing", "no range"},
    };
    expectFirst(cases);
}

TEST(Radar, TargetsAreNamedFoundAgainAndLost)
{
    AISBench bench;
    bench.sentence("$RATTM,07,2.31,214.5,T,0.0,0.0,T,,,N,,Q,,,A");
    EXPECT_EQ(bench.model.count(), 0U) << "own position not known";
    bench.controller.plotPosition(own);
    bench.sentence("$RATTM,07,2.31,214.5,T,0.0,0.0,T,,,N,,Q,,,A");
    ASSERT_EQ(bench.model.count(), 1U);
    EXPECT_EQ(bench.model.aisPosition(0).name(), "Radar target 7");
    bench.sentence("$RATLL,07,4916.450,N,12311.120,W,TGT07,120000.00,T,");
    EXPECT_EQ(bench.first(), "-123.1853 49.2742 0.0 0.0 -");
    EXPECT_EQ(bench.model.aisPosition(0).name(), "TGT07");
    bench.sentence("$RATTM,1000,1,2,T,,,T,,,N,,T,,,A");
    bench.sentence("$RATTM,-1,1,2,T,,,T,,,N,,T,,,A");
    bench.sentence("$RATTM,,1,2,T,,,T,,,N,,T,,,A");
    EXPECT_EQ(bench.model.count(), 1U);
    bench.sentence("$RATTM,07,,,,,,,,,N,,L,,,");
    EXPECT_EQ(bench.model.count(), 0U);
}

TEST(Radar, ReceiverPositionGoesAfterFifteenSeconds)
{
    AISBench bench;
    bench.sentence("$GPRMC,120000,V,4916.45,N,12311.12,W,4.5,54.7,,,");
    EXPECT_EQ(bench.model.count(), 0U);
    bench.sentence("$GPRMC,120000,A,4916.45,N,12311.12,W,4.5,54.7,,,");
    EXPECT_EQ(bench.first(), "-123.1853 49.2742 4.5 54.7 -");
    EXPECT_TRUE(bench.model.aisPosition(0).gps());
    bench.clock.advance(std::chrono::seconds(15));
    bench.controller.aisPositionTimer();
    EXPECT_EQ(bench.model.count(), 1U);
    bench.clock.advance(std::chrono::seconds(1));
    bench.controller.aisPositionTimer();
    EXPECT_EQ(bench.model.count(), 0U);
}

} // namespace
} // namespace kelvox
