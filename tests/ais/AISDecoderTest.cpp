#include "ais/AISFixture.h"

#include <gtest/gtest.h>

namespace kelvox {
namespace {

TEST(AISDecoder, PublishedPositionReports)
{
    // The values of independent decoders, to 4 decimals; the last but one holds a heading of 177,
    // which class B is not asked for.
    const std::pair<const char*, const char*> reports[] = {
        {"!AIVDM,1,1,,A,13HOI:0P0000VOHLCnHQKwvL05Ip,0*23", "0.1314 49.4756 0.0 36.7 -"},
        {"!AIVDM,1,1,,B,15M67FC000G?ufbE`FepT@3n00Sa,0*5C", "-122.3416 37.8021 0.0 219.3 1"},
        {"!AIVDM,1,1,,A,15NPOOPP00o?b=bE`UNv4?w428D;,0*24", "-122.4082 37.8084 0.0 - -"},
        {"!AIVDM,1,1,,B,181:Kjh01ewHFRPDK1s3IRcn06sd,0*08", "-8.6612 35.6906 10.9 87.0 85"},
        {"!AIVDM,1,1,,B,25Cjtd0Oj;Jp7ilG7=UkKBoB0<06,0*60", "-71.6261 40.3924 13.9 87.7 91"},
        {"!AIVDM,1,1,,A,38Id705000rRVJhE7cl9n;160000,0*40", "-76.3275 36.9100 0.0 252.0 352"},
        {"!AIVDM,1,1,,A,B6CdCm0t3`tba35f@V9faHi7kP06,0*58", "53.0110 40.0053 1.4 177.0 -"},
        {"!AIVDM,1,1,,B,B5O6hr00<veEKmUaMFdEow`UWP06,0*4F", "-72.2338 39.4809 5.1 34.9 -"},
    };
    for (const auto& [line, expected] : reports) {
        AISBench bench;
        bench.feed(line);
        EXPECT_EQ(bench.first(), expected) << line;
        EXPECT_EQ(bench.model.aisPosition(0).channel(), line[12] == 'A' ? 1 : 2);
    }
}

TEST(AISDecoder, PublishedStaticReports)
{
    AISBench bench;
    bench.feed("!AIVDM,2,1,1,A,55?MbV02;H;s<HtKR20EHE:0@T4@Dn2222222216L961O5Gf0NSQEp6ClRp8,0*1C");
    EXPECT_EQ(bench.model.count(), 0U);
    bench.feed("!AIVDM,2,2,1,A,88888888880,2*25");
    bench.feed("!AIVDM,1,1,,A,H42O55i18tMET00000000000000,2*6D");
    bench.feed("!AIVDM,1,1,,A,H42O55lti4hhhilD3nink000?050,0*40");
    const auto text = [&bench](std::int32_t mmsi) {
        const auto& ship = *bench.model.aisPositionWithMMSI(mmsi);
        return fmt::format("{}|{}|{}|{}|{:.2f}|{:.2f}|{:.2f} from starboard|{:.2f} from the bow",
                           ship.name(), ship.callSign(), ship.destination(), ship.type(),
                           ship.length(), ship.beam(), ship.referencePoint().x,
                           ship.referencePoint().y);
    };
    // Metres 225, 70, 1, 31 and 0, 15, 0, 5. The destination is there only when all 424 bits are.
    EXPECT_EQ(text(351759000),
              "EVER DIADEM|3FOF8|NEW YORK|70|967.85|104.99|101.71 from starboard|"
              "738.19 from the bow");
    EXPECT_EQ(text(271041815),
              "PROGUY|TC6163||60|49.21|16.40|16.40 from starboard|"
              "0.00 from the bow");
    EXPECT_EQ(bench.model.count(), 2U);
}

TEST(AISDecoder, LinesThatBringNothing)
{
    const std::pair<std::string, const char*> lines[] = {
        {"!AIVDM,1,1,,B,13@nePh01>PjcO4PGReoJEmL0HJg,0*67", "wrong checksum"},
        {"!AIVDM,1,1,,A,13HOI:0P0000VOHLCnHQKwvL05Ip,0\r\n", "no checksum"},
        {"!AIVDM,1,1,,A,403OviQuMGCqWrRO9>E6fE700@GO,0*4D", "type 4"},
        {"!AIVDM,1,1,,B,C5N3SRgPEnJGEBT>NhWAwwo862PaLELTBJ:V00000000S0D:R220,0*0B", "type 19"},
        {"$PNMLS,36,25,3*51", "proprietary"},
        {RawReport{.mmsi = 1}.classA().sentence(), "no position at all"},
        {AISWriter().add(24, 6).add(0, 2).add(5, 30).add(2, 2).add(0, 128).sentence(), "part C"},
        {AISWriter().add(25, 6).add(0, 162).sentence(), "type above 24"},
        {AISWriter().add(0, 168).sentence(), "type 0"},
        {AISWriter::checked("!AIVDM,0,1,,A,13HOI:0P0000VOHLCnHQKwvL05Ip,0"), "no fragments"},
        {AISWriter::checked("!AIVDM,1,0,,A,13HOI:0P0000VOHLCnHQKwvL05Ip,0"), "fragment 0"},
        {AISWriter::checked("!AIVDM,10,10,,A,13HOI:0P0000VOHLCnHQKwvL05Ip,0"), "10 fragments"},
        {AISWriter::checked("!AIVDM,,1,,A,13HOI:0P0000VOHLCnHQKwvL05Ip,0"), "count empty"},
        {AISWriter::checked("!AIVDM,1,1,,A,,0"), "payload empty"},
        {AISWriter::checked("!AIVDM,1,1,,A,13HOI:0P0000VOHLCnHQKwvL05Ip,"), "fill bits empty"},
        {AISWriter::checked("!AIVDM,1,1,,A,13HOI:0P0000VOHLCnHQKwvL05Ip"), "fill bits missing"},
    };
    for (const auto& [line, why] : lines) {
        AISBench bench;
        bench.feed(line);
        EXPECT_EQ(bench.model.count(), 0U) << why;
    }
}

TEST(AISDecoder, RawValuesAtTheirLimits)
{
    constexpr int far = 90'000'000; // 150 degrees
    constexpr int none = 108'600'000;
    struct Case {
        RawReport raw; ///< longitude, latitude, speed, course, heading
        const char* expected;
        const char* why;
    };
    const Case cases[] = {
        {{7, -1, -1}, "0.0000 0.0000 - - -", "negative values lie one unit nearer zero"},
        {{7, -far, -60'031, 1019, 3599, 359}, "-150.0000 -0.1000 101.9 359.9 359", "largest"},
        {{7, far, 300'000, 1020, 3600, 360}, "150.0000 0.5000 - - -", "just beyond"},
        {{7, none, 600'000, 0, 0, 0}, "- 1.0000 0.0 0.0 0", "one ordinate is enough"},
        {{7, 1, 54'600'000, 0, 0, 0}, "0.0000 - 0.0 0.0 0", "the other one"},
    };
    for (const auto& test : cases) {
        AISBench bench;
        bench.feed(test.raw.classA(3).sentence());
        EXPECT_EQ(bench.first(), test.expected) << test.why;
    }
    EXPECT_EQ(aisPositionOnGPS(134'217'727, 268'435'455),
              (Position{.longitude = 0, .latitude = 0}));
}

TEST(AISDecoder, FragmentsGoThroughOneBuffer)
{
    const auto payload = [](std::uint32_t mmsi, std::string_view name) {
        AISWriter writer;
        writer.add(5, 6).add(0, 2).add(mmsi, 30).add(0, 32).add("CALL", 7).add(name, 20);
        return writer.add(70, 8).add(0, 62).add("PORT", 20).add(0, 4).payload();
    };
    const std::string messages[] = {payload(11, "ALPHA"), payload(22, "BRAVO")};
    // Each sentence is a letter, small for the first part of its message, capital for the end, and
    // fragment count, number and sequential id.
    struct Case {
        std::vector<std::string> sentences;
        std::string table; ///< names
        const char* why;
    };
    const Case cases[] = {
        {{"a2,1,4", "A2,2,4"}, "ALPHA ", "in order"},
        {{"a2,1,4", "A2,2,3"}, "", "another id"},
        {{"a2,1,", "A2,2,3"}, "ALPHA ", "no id to compare with"},
        {{"a2,1,4", "A2,2,"}, "ALPHA ", "id only at first"},
        {{"a2,1,1", "b2,1,2", "A2,2,1", "B2,2,2"}, "BRAVO ", "interleaved: the later survives"},
        {{"a2,1,1", "b2,1,1", "A2,2,1"}, "BRAVO ", "same id: a stranger's end is taken"},
        {{"A2,2,4", "a2,1,4"}, "", "the end came first"},
        {{"a3,1,4", "A3,3,4"}, "ALPHA ", "a gap is not noticed"},
    };
    for (const auto& test : cases) {
        AISBench bench;
        for (const auto& sentence : test.sentences) {
            const bool isEnd = sentence[0] < 'a';
            const auto& message = messages[(sentence[0] | 32) - 'a'];
            bench.sentence("!AIVDM," + sentence.substr(1) + ",A,"
                           + (isEnd ? message.substr(40) + ",2" : message.substr(0, 40) + ",0"));
        }
        std::string table;
        for (const auto* target : bench.model.positionEnumerator())
            if (target->mmsi() > 0) // a message that began with its end has none
                table += target->name() + " ";
        EXPECT_EQ(table, test.table) << test.why;
    }
}

TEST(AISDecoder, AStreamOfLateFragmentsDoesNotGrowTheBuffer)
{
    AISAssembly assembly;
    const std::string payload(80, 'w');
    for (int i = 0; i < 100'000; ++i)
        assembly.add({"9", "2", "", "A", payload, "0"});
    EXPECT_LE(assembly.bits().size(), 20'000U);
}

TEST(AISDecoder, TextsLoseTheirPaddingButNotTheKnownName)
{
    AISBench bench;
    EXPECT_EQ(bench.vessel(0, 1, 1).name(), "~???");
    bench.vessel(9, 1, 1);
    EXPECT_EQ(bench.model.find(9)->name(), "~9");
    const auto named = [](std::string_view name) {
        return AISWriter().add(24, 6).add(0, 2).add(9, 30).add(0, 2).add(name, 20).sentence();
    };
    bench.feed(named(" MY@SHIP\"[] "));
    EXPECT_EQ(bench.model.find(9)->name(), "MY SHIP\"[]");
    bench.feed(named(""));
    EXPECT_EQ(bench.model.find(9)->name(), "MY SHIP\"[]");
}

TEST(AISDecoder, OwnVesselIsHiddenOnceAndItsMovementPosted)
{
    struct Bus final : NotificationBus {
        [[nodiscard]] bool companionRuns() const override { return true; }
        void post(const std::string&, const std::string& text) override { texts.push_back(text); }
        std::vector<std::string> texts;
    } bus;
    AISBench bench;
    GPSNotification notification(bench.clock, bus);
    bench.controller.setNotification(&notification);
    RawReport own{.mmsi = 3, .longitude = 600'000, .latitude = 1'200'000, .speed = 50};
    bench.feed(own.classA().sentence("AIVDO"));
    EXPECT_TRUE(bus.texts.empty()); // no course
    own.course = 900;
    bench.feed(own.classA().sentence("AIVDO"));
    ASSERT_EQ(bus.texts.size(), 1U);
    EXPECT_EQ(bus.texts[0], "1.000000 2.000000 5.000000 90.000000 -1000.000000");

    auto& target = *bench.model.find(3);
    EXPECT_TRUE(target.own());
    EXPECT_FALSE(target.show());
    target.setShow(true);
    bench.feed(own.classA().sentence("AIVDO"));
    EXPECT_TRUE(target.show());
}

} // namespace
} // namespace kelvox
