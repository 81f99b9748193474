#include "ais/AISFixture.h"

#include <gtest/gtest.h>

namespace kelvox {
namespace {

constexpr float unknown = static_cast<float>(noValue);

/// What a published sentence decodes to, as independent decoders agree.
struct Published {
    std::string lines;
    std::int32_t mmsi;
    double longitude, latitude;
    float sog, cog, hdg;
};

TEST(AISDecoder, PublishedPositionReports)
{
    const Published reports[] = {
        {"!AIVDM,1,1,,A,13HOI:0P0000VOHLCnHQKwvL05Ip,0*23", 227006760, 0.131380, 49.475577, 0,
         36.7F, unknown},
        {"!AIVDM,1,1,,B,15M67FC000G?ufbE`FepT@3n00Sa,0*5C", 366053209, -122.341618, 37.802118, 0,
         219.3F, 1},
        {"!AIVDM,1,1,,A,15NPOOPP00o?b=bE`UNv4?w428D;,0*24", 367533950, -122.408232, 37.808418, 0,
         unknown, unknown},
        {"!AIVDM,1,1,,B,181:Kjh01ewHFRPDK1s3IRcn06sd,0*08", 538090443, -8.661200, 35.690633, 10.9F,
         87, 85},
        {"!AIVDM,1,1,,B,25Cjtd0Oj;Jp7ilG7=UkKBoB0<06,0*60", 356302000, -71.626143, 40.392358, 13.9F,
         87.7F, 91},
        {"!AIVDM,1,1,,A,38Id705000rRVJhE7cl9n;160000,0*40", 563808000, -76.327533, 36.910000, 0,
         252, 352},
        {"!AIVDM,1,1,,B,B5O6hr00<veEKmUaMFdEow`UWP06,0*4F", 368161000, -72.233848, 39.480925, 5.1F,
         34.9F, unknown},
        // Class B: the message holds a heading of 177, which is not read.
        {"!AIVDM,1,1,,A,B6CdCm0t3`tba35f@V9faHi7kP06,0*58", 423302100, 53.010997, 40.005283, 1.4F,
         177, unknown},
    };
    for (const auto& report : reports) {
        AISBench bench;
        bench.feed(report.lines);
        ASSERT_EQ(bench.model.count(), 1U) << report.lines;
        const auto& target = bench.model.aisPosition(0);
        EXPECT_EQ(target.mmsi(), report.mmsi);
        // One raw unit and the rounding of single precision.
        EXPECT_NEAR(target.positionOnGPS().longitude, report.longitude, 2e-5) << report.lines;
        EXPECT_NEAR(target.positionOnGPS().latitude, report.latitude, 2e-5) << report.lines;
        EXPECT_FLOAT_EQ(target.sog(), report.sog) << report.lines;
        EXPECT_FLOAT_EQ(target.cog(), report.cog) << report.lines;
        EXPECT_EQ(target.hdg(), report.hdg) << report.lines;
        EXPECT_EQ(target.channel(), report.lines[12] == 'A' ? 1 : 2);
    }
}

TEST(AISDecoder, PublishedStaticReports)
{
    AISBench bench;
    bench.feed("!AIVDM,2,1,1,A,55?MbV02;H;s<HtKR20EHE:0@T4@Dn2222222216L961O5Gf0NSQEp6ClRp8,0*1C");
    EXPECT_EQ(bench.model.count(), 0U);
    bench.feed("!AIVDM,2,2,1,A,88888888880,2*25");
    const auto* ship = bench.model.find(351759000);
    ASSERT_NE(ship, nullptr);
    EXPECT_EQ(ship->name(), "EVER DIADEM");
    EXPECT_EQ(ship->callSign(), "3FOF8");
    EXPECT_EQ(ship->destination(), "NEW YORK"); // there only when all 424 bits are
    EXPECT_EQ(ship->type(), 70);
    EXPECT_NEAR(ship->length(), 967.85, 0.01);
    EXPECT_NEAR(ship->beam(), 32 * 3.28084, 1e-4);
    EXPECT_NEAR(ship->referencePoint().x, 31 * 3.28084, 1e-4); // from starboard
    EXPECT_NEAR(ship->referencePoint().y, 225 * 3.28084, 1e-4); // from the bow

    bench.feed("!AIVDM,1,1,,A,H42O55i18tMET00000000000000,2*6D");
    bench.feed("!AIVDM,1,1,,A,H42O55lti4hhhilD3nink000?050,0*40");
    const auto* yacht = bench.model.find(271041815);
    ASSERT_NE(yacht, nullptr);
    EXPECT_EQ(yacht->name(), "PROGUY");
    EXPECT_EQ(yacht->callSign(), "TC6163");
    EXPECT_EQ(yacht->type(), 60);
    EXPECT_NEAR(yacht->length(), 15 * 3.28084, 1e-4);
    EXPECT_NEAR(yacht->beam(), 5 * 3.28084, 1e-4);
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
    struct Case {
        RawReport raw;
        double longitude, latitude;
        float sog, cog, hdg;
        const char* why;
    };
    const Case cases[] = {
        {{.longitude = -1, .latitude = -1}, 0, 0, unknown, unknown, unknown, "one unit nearer 0"},
        {{.longitude = -600'000,
          .latitude = -300'000,
          .speed = 1019,
          .course = 3599,
          .heading = 359},
         -599'999 / 600'000.0,
         -299'999 / 600'000.0,
         101.9F,
         359.9F,
         359,
         "largest values"},
        {{.longitude = 600'000, .latitude = 300'000, .speed = 1020, .course = 3600, .heading = 360},
         1,
         0.5,
         unknown,
         unknown,
         unknown,
         "just beyond"},
        {{.latitude = 600'000, .speed = 0, .course = 0, .heading = 0},
         noCoordinate,
         1,
         0,
         0,
         0,
         "one ordinate is enough"},
        {{.longitude = 108'000'000, .latitude = -54'000'000},
         180,
         -53'999'999 / 600'000.0,
         unknown,
         unknown,
         unknown,
         "edge of the world"},
    };
    for (auto test : cases) {
        test.raw.mmsi = 7;
        AISBench bench;
        bench.feed(test.raw.classA(3).sentence());
        const auto* target = bench.model.find(7);
        ASSERT_NE(target, nullptr) << test.why;
        EXPECT_NEAR(target->positionOnGPS().longitude, test.longitude, 1e-5) << test.why;
        EXPECT_NEAR(target->positionOnGPS().latitude, test.latitude, 1e-5) << test.why;
        EXPECT_EQ(target->sog(), test.sog) << test.why;
        EXPECT_EQ(target->cog(), test.cog) << test.why;
        EXPECT_EQ(target->hdg(), test.hdg) << test.why;
    }
}

/// A type 5 message cut in two, with its ids and channels as a receiver may give them.
TEST(AISDecoder, FragmentsGoThroughOneBuffer)
{
    const auto payload = [](std::uint32_t mmsi, std::string_view name) {
        return AISWriter()
            .add(5, 6)
            .add(0, 2)
            .add(mmsi, 30)
            .add(0, 32)
            .add("CALL", 7)
            .add(name, 20)
            .add(70, 8)
            .add(0, 30)
            .add(0, 32)
            .add("PORT", 20)
            .add(0, 4)
            .payload();
    };
    const auto a = payload(11, "ALPHA");
    const auto b = payload(22, "BRAVO");
    const auto head = [](const std::string& text) { return text.substr(0, 40); };
    const auto tail = [](const std::string& text) { return text.substr(40); };
    struct Case {
        std::vector<std::string> sentences;
        std::string table; ///< names in the order of the MMSI
        const char* why;
    };
    const Case cases[] = {
        {{"2,1,4,A," + head(a) + ",0", "2,2,4,A," + tail(a) + ",2"}, "ALPHA ", "in order"},
        {{"2,1,4,A," + head(a) + ",0", "2,2,3,A," + tail(a) + ",2"}, "", "another id"},
        {{"2,1,,A," + head(a) + ",0", "2,2,3,A," + tail(a) + ",2"}, "ALPHA ", "no id to compare"},
        {{"2,1,4,A," + head(a) + ",0", "2,2,,A," + tail(a) + ",2"}, "ALPHA ", "id only at first"},
        {{"2,1,1,A," + head(a) + ",0", "2,1,2,B," + head(b) + ",0", "2,2,1,A," + tail(a) + ",2",
          "2,2,2,B," + tail(b) + ",2"},
         "BRAVO ",
         "interleaved on two channels: the later one survives"},
        {{"2,1,1,A," + head(a) + ",0", "2,1,1,B," + head(b) + ",0", "2,2,1,A," + tail(a) + ",2"},
         "BRAVO ",
         "the same id: a stranger's end is taken"},
        {{"2,2,4,A," + tail(a) + ",2", "2,1,4,A," + head(a) + ",0"}, "", "the end came first"},
        {{"3,1,4,A," + head(a) + ",0", "3,3,4,A," + tail(a) + ",2"}, "ALPHA ", "gap not noticed"},
        {{"2,1,4,A," + a + ",400", "2,2,4,A," + tail(b) + ",2"},
         "",
         "more fill bits than there are"},
    };
    for (const auto& test : cases) {
        AISBench bench;
        for (const auto& sentence : test.sentences)
            bench.sentence("!AIVDM," + sentence);
        std::string table;
        for (const auto* target : bench.model.positionEnumerator())
            if (target->mmsi() == 11 || target->mmsi() == 22)
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

TEST(AISDecoder, WhichStreamsAreTaken)
{
    AISBench bench;
    const auto taken = [&bench] {
        std::string commands;
        for (const std::string command : {"VDM", "RMC", "TTM", "TLL", "RSD"}) {
            const auto line = "$GP" + command + ",1*00\r\n";
            commands += bench.controller.takesFromGPS(line) ? command[0] : '-';
            commands += bench.controller.takesFromInstruments(line) ? command[0] : '-';
        }
        return commands;
    };
    EXPECT_EQ(taken(), "----T-T-R-");
    bench.settings.set("ais.useGPSPort", true);
    bench.controller.loadSettings();
    EXPECT_EQ(taken(), "V---T-T-R-");
    bench.settings.set("ais.useInstrumentsPort", true);
    bench.controller.loadSettings();
    EXPECT_EQ(taken(), "VV--TTTTRR");
}

} // namespace
} // namespace kelvox
