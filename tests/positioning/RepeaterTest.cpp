#include "positioning/Vessel.h"

#include <gtest/gtest.h>

namespace kelvox {
namespace {

using Texts = std::vector<std::string>;

/// The lines without checksum and line end, which SentenceText's own test covers.
Texts bare(const Texts& lines)
{
    Texts result;
    for (const auto& line : lines)
        result.push_back(line.substr(0, line.find('*')));
    return result;
}

SteeringTarget alongTheEquator()
{
    return {.name = "BUOY,4",
            .position = {.longitude = 1, .latitude = 0},
            .legStart = {.longitude = 0, .latitude = 0},
            .originName = "HOME",
            .routeName = "RT0001",
            .routeWaypoints = {"HOME", "BUOY,4"}};
}

TEST(Repeater, SteeringSentencesByteForByte)
{
    // Half way along a leg due east on the equator, 0.6 NM north of it, which is to port: steer
    // right. The waypoint bears 90 + atan(0.01 / 0.5) = 091.1, 30.006 NM off; 10 knots on 091
    // close at 10. Variation 2 E, so magnetic is 2 less.
    Vessel vessel;
    vessel.settings.set("tack1Speed", 7.25);
    vessel.settings.set("waypointApproachDistance", 0.1);
    vessel.repeater.loadSettings(vessel.settings);
    vessel.take("$GPRMC,123456,A,0000.600,N,00030.000,E,10.0,091.0,090324,2.0,E");
    vessel.repeater.setTarget(alongTheEquator());
    vessel.repeated.clear();
    vessel.toClients.clear();
    vessel.clock.advance(std::chrono::seconds(2));
    vessel.take("$GPRMC,123458,A,0000.600,N,00030.000,E,10.0,091.0,090324,2.0,E");

    const Texts generated = {
        "$GPXTE,A,A,0.600,R,N",
        "$GPVTG,091.0,T,089.0,M,10.0,N,18.5,K",
        "$GPBOD,090.0,T,088.0,M,BUOY-4,HOME",
        "$GPWPL,0000.000,N,00100.000,E,BUOY-4",
        "$GPBWC,123458,0000.000,N,00100.000,E,091.1,T,089.1,M,30.01,N,BUOY-4",
        "$GPRMB,A,0.600,R,HOME,BUOY-4,0000.000,N,00100.000,E,30.01,091.1,10.0,V",
        "$GPAPB,A,A,0.600,R,N,V,V,090.0,T,BUOY-4,091.1,T,091.1,T",
        "$PSILTBS,7.25,N",
        "$GPRTE,1,1,c,RT0001,HOME,BUOY-4",
    };
    EXPECT_EQ(bare(vessel.toClients), generated);
    ASSERT_EQ(vessel.repeated.size(), generated.size() + 1);
    EXPECT_TRUE(vessel.repeated[0].starts_with("$GPRMC")) << "what was received goes first";
    EXPECT_TRUE(
        std::equal(vessel.toClients.begin(), vessel.toClients.end(), vessel.repeated.begin() + 1));
}

TEST(Repeater, PaceAndWhoGenerates)
{
    Vessel vessel;
    const auto generatedAfter = [&vessel](double seconds) {
        vessel.clock.advance(std::chrono::duration<double>(seconds));
        vessel.toClients.clear();
        vessel.repeater.sendRepeat("$GPZDA,1\r\n");
        return bare(vessel.toClients);
    };
    const Texts none;
    const Texts blank = {"$GPRMB,A,,,,,,,,,,,,V", "$GPAPB,A,A,,,,,,,,,,,,"};
    EXPECT_EQ(generatedAfter(0), none);
    vessel.gps.setGotoActive(true);
    EXPECT_EQ(generatedAfter(1), none) << "the pace counts from the last set, written or not";
    EXPECT_EQ(generatedAfter(1), blank);
    EXPECT_EQ(generatedAfter(1.9), none);
    EXPECT_EQ(generatedAfter(0.2), blank);

    auto target = alongTheEquator();
    vessel.repeater.setTarget(target);
    EXPECT_EQ(generatedAfter(2), none) << "own position not known";
    vessel.take("$GPGLL,0000.600,N,00030.000,E");
    EXPECT_EQ(generatedAfter(2).size(), 8U) << "no VTG while course and speed are not known";
    target.fromGPS = true;
    vessel.repeater.setTarget(target);
    EXPECT_EQ(generatedAfter(2), none) << "the receiver steers itself";
}

TEST(Repeater, WhatIsPassedOn)
{
    struct Case {
        const char* sentence;
        bool idle, navigating, autopilot;
    };
    const Case cases[] = {
        {"$GPRMC,1\r\n", true, true, true},    {"$GPGLL,1\r\n", true, true, true},
        {"$GPGSV,1\r\n", true, true, false},   {"$GPRMB,1\r\n", true, false, false},
        {"$GPVTG,1\r\n", true, false, false},  {"$GPWPL,1*00\r\n", true, false, false},
        {"not a sentence", true, true, false},
    };
    for (const auto& test : cases) {
        Vessel vessel;
        vessel.repeater.sendRepeat(test.sentence);
        EXPECT_EQ(vessel.repeated.size(), test.idle ? 1U : 0U) << test.sentence;
        vessel.repeated.clear();
        vessel.repeater.setTarget(alongTheEquator());
        vessel.repeater.sendRepeat(test.sentence);
        EXPECT_EQ(vessel.repeated.size(), test.navigating ? 1U : 0U) << test.sentence;
        vessel.repeated.clear();
        vessel.settings.set("autopilot", true);
        vessel.repeater.loadSettings(vessel.settings);
        vessel.repeater.sendRepeat(test.sentence);
        EXPECT_EQ(vessel.repeated.size(), test.autopilot ? 1U : 0U) << test.sentence;
    }
}

TEST(Repeater, LongRoutesAreSplitIntoSentencesThatFit)
{
    Vessel vessel;
    auto target = alongTheEquator();
    target.routeWaypoints.clear();
    for (int i = 0; i < 40; ++i)
        target.routeWaypoints.push_back(fmt::format("WP{:04}", i));
    vessel.repeater.setTarget(target);
    vessel.take("$GPGLL,0000.600,N,00030.000,E");
    vessel.clock.advance(std::chrono::seconds(2));
    vessel.repeater.sendRepeat("$GPZDA,1\r\n");
    std::string names;
    int count = 0;
    for (const auto& line : vessel.toClients) {
        EXPECT_LE(line.size(), 82U) << line;
        if (!line.starts_with("$GPRTE,"))
            continue;
        EXPECT_EQ(line.substr(7, 4), fmt::format("6,{},", ++count)) << line;
        names += line.substr(20, line.find('*') - 20) + ',';
    }
    EXPECT_EQ(names, fmt::format("{},", fmt::join(target.routeWaypoints, ",")));
}

} // namespace
} // namespace kelvox
