#include "ais/AISFixture.h"
#include "navigation/NavMath.h"

#include <gtest/gtest.h>

namespace kelvox {
namespace {

constexpr Position own{.longitude = 10, .latitude = 0.001};

/// One mile is a minute of arc; at the equator a degree of longitude is as long as one of latitude.
constexpr double mile = 1 / 60.0;

TEST(Radar, TrackedTargetsByDistanceAndBearing)
{
    struct Case {
        std::string sentence;
        float heading;
        double east, north; ///< miles from the own vessel
        float sog, cog;
        const char* why;
    };
    constexpr float unknown = static_cast<float>(noValue);
    const Case cases[] = {
        {"$RATTM,01,0.50,90.0,R,8.2,270.0,T,0.12,3.4,N,TGT01,T,,120000.00,M", 0, 0.5, 0, 8.2F, 270,
         "off the beam, heading north"},
        {"$RATTM,01,0.50,90.0,R,5.0,45.0,R,,,N,,T,,,M", 270, 0, 0.5, 5, 315, "heading west"},
        {"$RATTM,01,0.50,90.0,R,5.0,45.0,T,,,N,,T,,,M", unknown, 0, -0.5, 5, 45,
         "no compass: relative to the course, which is east"},
        {"$RATTM,01,1.852,180.0,T,18.52,0.0,T,,,K,,Q,,,A", 0, 0, -1, 10, 0, "kilometres"},
        {"$RATTM,01,1,270,T,,,T,,,S,,T", 0, -0.868976, 0, unknown, unknown,
         "statute miles, no movement, older equipment ends early"},
    };
    for (const auto& test : cases) {
        AISBench bench;
        bench.compass.headingTrue = test.heading;
        bench.controller.plotPosition(own);
        bench.controller.plotCourse(90);
        bench.sentence(test.sentence);
        const auto* target = bench.model.find(AISPosition::radarKey(1));
        ASSERT_NE(target, nullptr) << test.why;
        EXPECT_TRUE(target->radarTarget());
        EXPECT_NEAR(target->positionOnGPS().longitude, own.longitude + test.east * mile, 2e-5)
            << test.why;
        EXPECT_NEAR(target->positionOnGPS().latitude, own.latitude + test.north * mile, 2e-5)
            << test.why;
        EXPECT_NEAR(target->sog(), test.sog, 1e-4) << test.why;
        EXPECT_EQ(target->cog(), test.cog) << test.why;
    }
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
    ASSERT_EQ(bench.model.count(), 1U);
    const auto& target = bench.model.aisPosition(0);
    EXPECT_EQ(target.name(), "TGT07");
    EXPECT_NEAR(target.positionOnGPS().latitude, 49.274167, 1e-5);
    EXPECT_NEAR(target.positionOnGPS().longitude, -123.185333, 1e-5);
    bench.sentence("$RATTM,1000,1,2,T,,,T,,,N,,T,,,A");
    bench.sentence("$RATTM,-1,1,2,T,,,T,,,N,,T,,,A");
    bench.sentence("$RATTM,,1,2,T,,,T,,,N,,T,,,A");
    EXPECT_EQ(bench.model.count(), 1U);
    bench.sentence("$RATTM,07,,,,,,,,,N,,L,,,");
    EXPECT_EQ(bench.model.count(), 0U);
}

TEST(Radar, CursorFollowsTheDisplayRotation)
{
    struct Case {
        std::string sentence;
        double bearing; ///< true, at 0.25 miles
    };
    const Case cases[] = {
        {"$RARSD,0.00,0.0,1.50,45.0,2.00,10.0,0.75,90.0,0.25,270.0,3.0,N,H", 300},
        {"$RARSD,,,,,,,,,0.25,270.0,3.0,N,C", 0},
        {"$RARSD,,,,,,,,,0.25,270.0,3.0,N,N", 270},
        {"$RARSD,,,,,,,,,0.25,270.0", 300},
    };
    for (const auto& test : cases) {
        AISBench bench;
        bench.compass.headingTrue = 30;
        bench.controller.plotPosition(own);
        bench.controller.plotCourse(90);
        bench.sentence(test.sentence);
        const auto* cursor = bench.model.find(AISPosition::cursorKey);
        ASSERT_NE(cursor, nullptr) << test.sentence;
        EXPECT_TRUE(cursor->cursor());
        const double angle = test.bearing * 3.14159265 / 180;
        EXPECT_NEAR(cursor->positionOnGPS().longitude - own.longitude,
                    0.25 * mile * std::sin(angle), 1e-5);
        EXPECT_NEAR(cursor->positionOnGPS().latitude - own.latitude, 0.25 * mile * std::cos(angle),
                    1e-5);
    }
}

TEST(Radar, ReceiverPositionGoesAfterFifteenSeconds)
{
    AISBench bench;
    bench.sentence("$GPRMC,120000,V,4916.45,N,12311.12,W,4.5,54.7,,,");
    EXPECT_EQ(bench.model.count(), 0U);
    bench.sentence("$GPRMC,120000,A,4916.45,N,12311.12,W,4.5,54.7,,,");
    const auto* receiver = bench.model.find(AISPosition::gpsKey);
    ASSERT_NE(receiver, nullptr);
    EXPECT_NEAR(receiver->positionOnGPS().latitude, 49.274167, 1e-5);
    EXPECT_FLOAT_EQ(receiver->sog(), 4.5F);
    bench.clock.advance(std::chrono::seconds(15));
    bench.controller.aisPositionTimer();
    EXPECT_EQ(bench.model.count(), 1U);
    bench.clock.advance(std::chrono::seconds(1));
    bench.controller.aisPositionTimer();
    EXPECT_EQ(bench.model.count(), 0U);
}

} // namespace
} // namespace kelvox
