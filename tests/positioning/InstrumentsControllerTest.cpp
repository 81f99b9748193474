#include "positioning/Vessel.h"

#include <gtest/gtest.h>

namespace kelvox {
namespace {

using Instrument = InstrumentsController::Instrument;

TEST(InstrumentsController, SentencesAndTheirConversions)
{
    struct Case {
        const char* sentence;
        Instrument instrument;
        float expected;
    };
    const Case cases[] = {
        {"$HCHDG,101.1,,,7.1,W", Instrument::Heading, 94},
        {"$HCHDG,101.1,,,7.1,E", Instrument::Heading, 108.2F},
        {"$HEHDT,274.5,T", Instrument::Heading, 274.5F},
        {"$HCHDM,238.5,M", Instrument::Heading, 238.5F},
        {"$SDDBT,36.4,f,11.1,M,6.0,F", Instrument::Depth, 36.4F},
        {"$SDDBT,,f,11.1,M,6.0,F", Instrument::Depth, -1000},
        {"$SDDPT,10.0,", Instrument::Depth, 32.8084F},
        {"$SDDPT,10.0,-0.5", Instrument::Depth, 31.16798F},
        {"$SDDPT,0.1,", Instrument::Depth, -1000},
        {"$YXMTW,10,C", Instrument::Temperature, 50},
        {"$YXMTW,60,F", Instrument::Temperature, 60},
        {"$YXMTW,60,K", Instrument::Temperature, -1000},
        {"$WIMWV,270.0,T,10.0,M,A", Instrument::WindAngle, -90},
        {"$WIMWV,180.0,T,10.0,M,A", Instrument::WindAngle, 180},
        {"$WIMWV,270.0,T,10.0,M,A", Instrument::WindSpeed, 19.438F},
        {"$WIMWV,270.0,T,10.0,K,A", Instrument::WindSpeed, 5.396F},
        {"$WIMWV,270.0,T,10.0,S,A", Instrument::WindSpeed, 8.684F},
        {"$WIMWV,270.0,T,10.0,N,A", Instrument::WindSpeed, 10},
        {"$WIMWV,270.0,R,10.0,N,A", Instrument::WindSpeed, -1000},
        {"$IIVHW,245.1,T,240.0,M,5.5,N,10.2,K", Instrument::Heading, 245.1F},
        {"$IIVHW,,T,240.0,M,5.5,N,10.2,K", Instrument::Heading, 240},
        {"$IIVHW,,T,,M,5.5,N,10.2,K", Instrument::Speed, 5.5F},
        {"$IIVWT,75,L,12.0,N,,M,,K", Instrument::WindAngle, -75},
        {"$IIVWT,75,R,,N,10.0,M,,K", Instrument::WindSpeed, 19.438F},
    };
    for (const auto& test : cases) {
        Vessel vessel;
        vessel.instruments.processRawSentence(completeSentence(test.sentence, AddChecksum::Yes));
        EXPECT_NEAR(vessel.instruments.value(test.instrument), test.expected, 1e-4)
            << test.sentence;
    }
}

TEST(InstrumentsController, ChosenWindGoesFirstTheOtherStandsIn)
{
    Vessel vessel;
    auto& instruments = vessel.instruments;
    const auto take = [&](std::string_view sentence) {
        instruments.processRawSentence(completeSentence(sentence, AddChecksum::Yes));
    };
    vessel.settings.set("windApparent", true);
    take("$IIVWT,80.0,R,10.0,N,,,,");
    EXPECT_FLOAT_EQ(instruments.value(Instrument::WindAngle), 80);
    EXPECT_EQ(instruments.windAngleLabel(), "NSTWA");
    take("$IIMWV,320.0,R,14.0,N,A");
    EXPECT_EQ(instruments.windSpeedLabel(), "NSAWS");
    take("$IIVWT,80.0,R,10.0,N,,,,");
    EXPECT_FLOAT_EQ(instruments.value(Instrument::WindAngle), -40) << "apparent wind is fresh";
    vessel.clock.advance(std::chrono::seconds(11));
    take("$IIVWT,80.0,R,10.0,N,,,,");
    EXPECT_FLOAT_EQ(instruments.value(Instrument::WindAngle), 80) << "the vane fell silent";
}

TEST(InstrumentsController, ValuesStayAndGrowStale)
{
    Vessel vessel;
    EXPECT_EQ(vessel.instruments.age(Instrument::Depth), std::nullopt);
    EXPECT_TRUE(vessel.instruments.isStale(Instrument::Depth));
    vessel.instruments.setDepth(12);
    vessel.clock.advance(std::chrono::seconds(10));
    EXPECT_FALSE(vessel.instruments.isStale(Instrument::Depth));
    vessel.clock.advance(std::chrono::seconds(1));
    EXPECT_TRUE(vessel.instruments.isStale(Instrument::Depth));
    EXPECT_FLOAT_EQ(vessel.instruments.value(Instrument::Depth), 12);
    EXPECT_DOUBLE_EQ(*vessel.instruments.age(Instrument::Depth), 11);
}

/// Stands where the AIS consumer will: strict about checksums, takes all that others pass on.
class StrictConsumer final : public NmeaConsumer {
public:
    explicit StrictConsumer(Executor& main)
        : NmeaConsumer(main, MissingChecksum::Refused)
    {
    }
    [[nodiscard]] bool knowsCommand(std::string_view command) const override
    {
        return command == "VDM";
    }
    [[nodiscard]] bool takesFromGPS(std::string_view) const override { return true; }
    [[nodiscard]] bool takesFromInstruments(std::string_view) const override { return true; }
    void handle(std::string_view sentence) override { taken.emplace_back(sentence); }
    std::vector<std::string> taken;
};

TEST(InstrumentsController, LinesAreForwardedBetweenConsumers)
{
    Vessel vessel;
    StrictConsumer ais(vessel.executor);
    vessel.gps.setAIS(&ais);
    vessel.instruments.setAIS(&ais);
    vessel.instruments.setGPS(&vessel.gps);
    const auto depth = completeSentence("$IIDBT,30.5,f", AddChecksum::Yes);
    const auto message = completeSentence("!AIVDM,1,1,,A,1,0", AddChecksum::Yes);

    vessel.gps.processRawSentence(depth);
    EXPECT_TRUE(vessel.instruments.isStale(Instrument::Depth)) << "not shared yet";
    vessel.settings.set("instruments.useGPSPort", true);
    vessel.instruments.loadSettings();
    vessel.gps.processRawSentence(depth);
    EXPECT_FALSE(vessel.instruments.isStale(Instrument::Depth));

    vessel.gps.processRawSentence(message);
    vessel.instruments.processRawSentence(message);
    vessel.gps.processRawSentence("!AIVDM,1,1,,A,2,0\r\n"); // no checksum
    EXPECT_EQ(ais.taken, std::vector<std::string>(2, "!AIVDM,1,1,,A,1,0"));

    const auto fix = completeSentence("$GPGLL,5230.000,N,01315.000,E", AddChecksum::Yes);
    vessel.instruments.processRawSentence(fix);
    EXPECT_TRUE(vessel.plotted.empty());
    vessel.settings.set("type", 5LL);
    vessel.gps.loadSettings();
    const auto repeated = vessel.repeated.size();
    vessel.instruments.processRawSentence(fix);
    EXPECT_EQ(vessel.plotted.size(), 1U) << "the receiver sits on the instruments' line";
    EXPECT_EQ(vessel.repeated.size(), repeated) << "it was not received on the GPS port";
}

} // namespace
} // namespace kelvox
