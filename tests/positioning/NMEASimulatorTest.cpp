#include "positioning/NMEASimulator.h"
#include "positioning/NMEA.h"
#include "positioning/OwnVessel.h"

#include "navigation/NavMath.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <map>

namespace kelvox {
namespace {

const std::chrono::system_clock::time_point noon =
    std::chrono::sys_days(std::chrono::year(2024) / 3 / 9) + std::chrono::hours(12);

TEST(NMEASimulator, CycleOfFifteenByteForByte)
{
    ManualClock clock(noon);
    NMEASimulator simulator(clock);
    simulator.setPosition({.longitude = -123.25, .latitude = 49.5});
    simulator.setSpeed(6);
    simulator.setHeading(90);
    simulator.setVariation(-2.5F);
    const char* const patterns[] = {
        "$IIHDG,092.5,0.0,E,2.5,W*52",
        "$IIHDM,092.5,M*",
        "$IIHDT,090.0,T*",
        "$IIVHW,090.0,T,092.5,M,6.0,N,0,K*",
        "$GPRMC,120000,A,4930.000,N,12315.000,W,6.0,090.0,090324,,*",
        "$IIDBT,",
        "$IIMTW,",
        "$IIVWT,",
        "$IIVWR,",
        "$IIMWV,",
        "$GPRMC,120000,A,4930.000,N,12315.000,W,6.0,090.0,090324,,*",
        "$RATTM,01,0.50,90.0,R,",
        "$RARSD,,,,,,,,,0.25,270.0*64\r\n",
        "$GPTXT,1,1,1,SIMULATOR*38\r\n",
    };
    for (const auto* pattern : patterns) {
        const auto sentence = simulator.nextSentence();
        ASSERT_TRUE(sentence) << pattern;
        EXPECT_TRUE(sentence->starts_with(pattern)) << *sentence << " is not " << pattern;
        EXPECT_TRUE(sentence->ends_with("\r\n"));
    }
    EXPECT_EQ(simulator.nextSentence(), std::nullopt);
    EXPECT_TRUE(simulator.nextSentence()->starts_with("$IIHDG")) << "the sixteenth call";
}

TEST(NMEASimulator, DeadReckoningOverMinutesAndOverManySteps)
{
    for (const int steps : {1, 400}) {
        ManualClock clock(noon);
        NMEASimulator simulator(clock);
        simulator.setPosition({.longitude = 71, .latitude = 0});
        simulator.setSpeed(6);
        simulator.setHeading(90);
        for (int step = 0; step < steps; ++step) {
            clock.advance(std::chrono::duration<double>(600.0 / steps));
            for (int i = 0; i < 15; ++i)
                (void)simulator.nextSentence();
        }
        // A mile along the equator is a minute of longitude.
        EXPECT_NEAR(simulator.position().longitude, 71 + 1.0 / 60, 2e-5) << steps;
        EXPECT_NEAR(simulator.position().latitude, 0, 1e-6) << steps;
    }
}

TEST(NMEASimulator, WithoutAPositionThereIsNoFix)
{
    ManualClock clock(noon);
    NMEASimulator simulator(clock);
    for (int i = 0; i < 4; ++i)
        (void)simulator.nextSentence();
    EXPECT_EQ(simulator.nextSentence(), std::nullopt);
}

TEST(NMEASimulator, WalksAreSmoothBoundedAndTheWindsAgree)
{
    ManualClock clock(noon);
    NMEASimulator simulator(clock, 7);
    OwnVessel vessel(clock);
    using Instrument = InstrumentsController::Instrument;
    simulator.setPosition({.longitude = 10, .latitude = 59});
    simulator.setSpeed(5);
    std::map<Instrument, std::pair<float, float>> ranges;
    float lastDepth = 0;
    for (int cycle = 0; cycle < 2000; ++cycle) {
        float apparentAngle = 0;
        float apparentSpeed = 0;
        float trueSpeed = 0;
        for (int i = 0; i < 15; ++i) {
            const auto sentence = simulator.nextSentence();
            if (!sentence)
                continue;
            vessel.settings.set("windApparent", sentence->starts_with("$IIMWV"));
            vessel.gps.processRawSentence(*sentence);
            if (sentence->starts_with("$IIMWV")) {
                apparentAngle = vessel.instruments.value(Instrument::WindAngle);
                apparentSpeed = vessel.instruments.value(Instrument::WindSpeed);
            } else if (sentence->starts_with("$IIVWT")) {
                trueSpeed = vessel.instruments.value(Instrument::WindSpeed);
                for (const auto item : {Instrument::Depth, Instrument::Temperature,
                                        Instrument::WindAngle, Instrument::WindSpeed}) {
                    const auto value = vessel.instruments.value(item);
                    auto& range = ranges.try_emplace(item, value, value).first->second;
                    range = {std::min(range.first, value), std::max(range.second, value)};
                }
            }
        }
        const auto depth = vessel.instruments.value(Instrument::Depth);
        if (cycle > 0) {
            EXPECT_LT(std::abs(depth - lastDepth), 5) << "no jumps";
        }
        lastDepth = depth;
        // Taking the boat's own speed out of the apparent wind leaves the true one.
        const auto radians = apparentAngle * 3.14159265 / 180;
        const auto ahead = apparentSpeed * std::cos(radians) - 5;
        const auto abeam = apparentSpeed * std::sin(radians);
        EXPECT_NEAR(std::hypot(ahead, abeam), trueSpeed, 0.2);
    }
    const auto within = [&ranges](Instrument item, double lowest, double highest, double spread) {
        const auto [from, to] = ranges.at(item);
        return from >= lowest && to <= highest && to - from > spread;
    };
    EXPECT_TRUE(within(Instrument::Depth, 8, 160, 5));
    EXPECT_TRUE(within(Instrument::Temperature, 48, 76, 0.2));
    EXPECT_TRUE(within(Instrument::WindAngle, 20, 160, 10));
    EXPECT_TRUE(within(Instrument::WindSpeed, 5, 24, 2)) << "below 5 it is put back to 10";
}

TEST(NMEASimulator, SteersToTheWaypointAndAlongTheRouteOfItsDescription)
{
    TemporaryFolder folder;
    const auto path = folder.path() / "trip.json";
    std::ofstream(path) << R"({"start": {"latitude": 59.0, "longitude": 10.0}, "speed": 30,
        "heading": 0, "route": [{"latitude": 59.0, "longitude": 10.1},
                                {"latitude": 58.95, "longitude": 10.1}],
        "traffic": [{"mmsi": 257000001, "name": "Sea Fox", "class": "A", "type": 70,
                     "length": 120, "beam": 18, "callSign": "LAAA", "destination": "OSLO",
                     "latitude": 59.01, "longitude": 10.02, "speed": 12, "course": 45},
                    {"mmsi": 257000002, "name": "TERN", "class": "B",
                     "latitude": -0.5, "longitude": -10.02, "speed": 5, "course": 200}]})";
    ManualClock clock(noon);
    NMEASimulator simulator(clock);
    ASSERT_TRUE(simulator.fromFile(path));
    simulator.setRunning(true);
    const auto distanceTo = [&](Position p) {
        return NavMath::distanceFromPoint(simulator.position(), p);
    };
    const auto sailUntil = [&](Position p) {
        for (int call = 0; call < 20000 && distanceTo(p) > 0.05F; ++call) {
            (void)simulator.nextLines();
            clock.advance(std::chrono::duration<double>(0.2));
        }
        return distanceTo(p) <= 0.05F;
    };
    const Position first{.longitude = 10.1, .latitude = 59};
    const Position second{.longitude = 10.1, .latitude = 58.95};
    const Position waypoint{.longitude = 10.0, .latitude = 58.9};
    EXPECT_TRUE(sailUntil(first));
    EXPECT_TRUE(sailUntil(second));
    simulator.setSteerTo(waypoint);
    EXPECT_TRUE(sailUntil(waypoint));
    simulator.resetStartPosition();
    EXPECT_NEAR(simulator.position().latitude, 59, 1e-9);

    for (const auto* wrong : {"[]", "{\"start\": 5}", "{\"route\": [{\"latitude\": 95}]}",
                              "{\"traffic\": [{\"mmsi\": 1}]}", "{\"speed\": \"6 kn\"}", "{"}) {
        std::ofstream(path) << wrong;
        EXPECT_FALSE(simulator.fromFile(path)) << wrong;
    }
}

TEST(NMEASimulator, TrafficReportsItselfByAIS)
{
    SimulatedTraffic traffic;
    traffic.setVessels({{.mmsi = 257000001,
                         .name = "SEA FOX",
                         .callSign = "LAAA",
                         .destination = "OSLO",
                         .shipType = 70,
                         .lengthMetres = 121,
                         .beamMetres = 18,
                         .start = {.longitude = -10.5, .latitude = 59.5},
                         .speedKnots = 12,
                         .courseDegrees = 45}},
                       0);
    std::vector<std::string> sentences;
    traffic.appendDue(0, sentences);
    ASSERT_EQ(sentences.size(), 3U) << "a position and two halves of the voyage data";
    const auto bitsOf = [&sentences](std::initializer_list<std::size_t> parts) {
        BitBuffer bits;
        for (const auto part : parts) {
            std::string line = sentences[part];
            EXPECT_TRUE(NMEA::checkSumValid(line, false)) << line;
            const NmeaFields fields(line);
            for (const char c : fields[5])
                bits.append(NMEA::sixBitToBinary(c), 6);
            bits.removeLast(static_cast<std::size_t>(NMEA::integer(fields[6])));
        }
        return bits;
    };
    // Bit places of the published message tables.
    const auto position = bitsOf({0});
    EXPECT_EQ(position.size(), 168U);
    EXPECT_EQ(NMEA::getUnsignedBits(position, 0, 6), 1U);
    EXPECT_EQ(NMEA::getUnsignedBits(position, 8, 30), 257000001U);
    EXPECT_EQ(NMEA::getUnsignedBits(position, 50, 10), 120U);
    EXPECT_EQ(NMEA::getUnsignedBits(position, 61, 28), (1U << 28) - 6'300'000U);
    EXPECT_EQ(NMEA::getUnsignedBits(position, 89, 27), 35'700'000U);
    EXPECT_EQ(NMEA::getUnsignedBits(position, 116, 12), 450U);
    EXPECT_EQ(NMEA::getUnsignedBits(position, 128, 9), 45U);
    const auto voyage = bitsOf({1, 2});
    EXPECT_EQ(voyage.size(), 424U);
    EXPECT_EQ(NMEA::getAsciiBits(voyage, 70, 42), "LAAA");
    EXPECT_EQ(NMEA::getAsciiBits(voyage, 112, 120), "SEA FOX");
    EXPECT_EQ(NMEA::getUnsignedBits(voyage, 232, 8), 70U);
    EXPECT_EQ(NMEA::getUnsignedBits(voyage, 240, 9) + NMEA::getUnsignedBits(voyage, 249, 9), 121U);
    EXPECT_EQ(NMEA::getAsciiBits(voyage, 302, 120), "OSLO");

    sentences.clear();
    traffic.appendDue(9, sentences);
    EXPECT_TRUE(sentences.empty());
    traffic.appendDue(10, sentences);
    EXPECT_EQ(sentences.size(), 1U);
}

} // namespace
} // namespace kelvox
