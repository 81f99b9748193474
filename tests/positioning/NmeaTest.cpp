#include "positioning/NMEA.h"

#include "connections/SentenceText.h"

#include <gtest/gtest.h>

namespace kelvox {
namespace {

using Checksum = NMEA::Checksum;

TEST(Nmea, ChecksumRules)
{
    // Sums of the first two are published with the sentences; the rest differ by one fault each.
    struct Case {
        std::string sentence;
        bool allowMissing;
        Checksum expected;
        std::string_view cutTo;
    };
    const Case cases[] = {
        {"$RATTM,07,,,,,,,,,N,,L,,,*77\r\n", false, Checksum::Valid, "$RATTM,07,,,,,,,,,N,,L,,,"},
        {"$PNMLS,36,25,3*51", false, Checksum::Valid, "$PNMLS,36,25,3"},
        {"!AIVDM,1,1,,A,13HOI:0P0000VOHLCnHQKwvL05Ip,0*23,tail*00\r\n", false, Checksum::Valid,
         "!AIVDM,1,1,,A,13HOI:0P0000VOHLCnHQKwvL05Ip,0"},
        {"$PNMLS,36,25,3*52\r\n", true, Checksum::Wrong, "$PNMLS,36,25,3"},
        {"$PNMLS,36,25,3*5", true, Checksum::Incomplete, "$PNMLS,36,25,3"},
        {"$PNMLS,36,25,3*", true, Checksum::Incomplete, "$PNMLS,36,25,3"},
        {"$PNMLS,36,25,3*\r\n", true, Checksum::Incomplete, "$PNMLS,36,25,3"},
        {"$*00", true, Checksum::Valid, "$"},
        {"$*0", true, Checksum::Incomplete, "$"},
        {"$GPGLL,1,2\r\n", true, Checksum::Valid, "$GPGLL,1,2"},
        {"$GPGLL,1,2\r\n", false, Checksum::Missing, "$GPGLL,1,2\r\n"},
        {"$GPGLL,1,2\n", true, Checksum::Missing, "$GPGLL,1,2\n"},
        {"GPGLL,1,2*00\r\n", true, Checksum::NoStart, "GPGLL,1,2*00\r\n"},
        {"", true, Checksum::NoStart, ""},
    };
    for (const auto& test : cases) {
        auto line = test.sentence;
        EXPECT_EQ(NMEA::checkSum(line, test.allowMissing), test.expected) << test.sentence;
        EXPECT_EQ(std::string_view(line.c_str()), test.cutTo) << test.sentence;
    }
}

TEST(Nmea, NoiseBeforeTheStartIsCutOff)
{
    EXPECT_EQ(NMEA::start({"\0\xff junk!AIVDM,$", 15}), "!AIVDM,$");
    EXPECT_EQ(NMEA::start("$GP"), "$GP");
    EXPECT_EQ(NMEA::start("nothing here"), "nothing here");
}

TEST(Nmea, AddressPartsNeedOneByteMoreThanTheyTake)
{
    EXPECT_EQ(NMEA::talker("$GPRMC,1"), "GP");
    EXPECT_EQ(NMEA::command("$GPRMC,1"), "RMC");
    EXPECT_EQ(NMEA::command("$GPRMC"), std::nullopt);
    EXPECT_EQ(NMEA::prefix("$P"), std::nullopt);
    EXPECT_EQ(NMEA::address("abc", static_cast<std::size_t>(-2), 1), std::nullopt);
}

TEST(Nmea, FieldsEndAtTheCutAndEmptyOnesCount)
{
    std::string line = "$GPRMB,A,,R*00\r\n";
    (void)NMEA::checkSum(line, true);
    EXPECT_EQ(NMEA::count(line), 4U);
    EXPECT_EQ(NMEA::parse(line, 0), "$GPRMB");
    EXPECT_EQ(NMEA::parse(line, 2), "");
    EXPECT_EQ(NMEA::parse(line, 3), "R");
    EXPECT_EQ(NMEA::parse(line, 4), std::nullopt);
    EXPECT_EQ(NMEA::parse("", 0), std::nullopt);

    std::string many = "$GPRTE";
    for (int i = 1; i <= 70; ++i)
        many.append(",W").append(std::to_string(i));
    for (const std::size_t i : {1, 31, 32, 33, 70})
        EXPECT_EQ(NMEA::parse(many, i), std::string("W").append(std::to_string(i)));
    EXPECT_EQ(NMEA::parse(many, 71), std::nullopt);
}

TEST(Nmea, PositionField)
{
    constexpr float unknown = -10000.0F;
    struct Case {
        std::string_view field, hemisphere;
        float expected;
        const char* why;
    };
    const Case cases[] = {
        {"4916.45", "N", 49.274166F, "published example"},
        {"12311.120", "W", -123.185333F, "published example"},
        {"4916.45", "X", unknown, "no hemisphere of that name"},
        {"4916.45", "", unknown, "hemisphere missing"},
        {"4916", "N", unknown, "no point"},
        {"4916,45", "N", unknown, "not a digit"},
        {"-916.45", "N", unknown, "sign"},
        {"1.", "N", unknown, "too short"},
        {"0007.5", "S", -0.125F, "below one degree"},
        {"7.5", "E", 0.125F, "leading noughts left out"},
        {".50", "N", 0.5F / 60, "fraction only"},
        {"4916.", "N", 49.266666F, "no fraction"},
    };
    for (const auto& test : cases)
        EXPECT_FLOAT_EQ(NMEA::position(test.field, test.hemisphere), test.expected) << test.why;
    EXPECT_EQ(NMEA::position(std::string(400, '9') + ".0", "N"), unknown) << "beyond a float";
}

TEST(Nmea, NumbersAreReadLeniently)
{
    EXPECT_EQ(NMEA::number(" 12.5kn"), 12.5F);
    EXPECT_EQ(NMEA::number("+.5"), 0.5F);
    EXPECT_EQ(NMEA::number("-3"), -3.0F);
    EXPECT_EQ(NMEA::number("abc"), 0.0F);
    EXPECT_EQ(NMEA::number("nan"), 0.0F);
    EXPECT_EQ(NMEA::number("-inf"), 0.0F);
    EXPECT_EQ(NMEA::number(""), std::nullopt);
    EXPECT_EQ(NMEA::number("1e99"), std::nullopt);
    EXPECT_EQ(NMEA::integer("07x"), 7);
    EXPECT_EQ(NMEA::integer("99999999999"), std::numeric_limits<int>::max());
}

TEST(Nmea, HexTextIsLittleEndianInTheMiddleSizes)
{
    EXPECT_EQ(NMEA::parseUInt8HexValue("x1F", 1), 0x1F);
    EXPECT_EQ(NMEA::parseUInt8HexValue("x1", 1), 0);
    EXPECT_EQ(NMEA::parseUInt16HexValue("1234", 0), 0x3412);
    EXPECT_EQ(NMEA::parseUInt32HexValue("12345678", 0), 0x78563412U);
    EXPECT_EQ(NMEA::parseUInt64HexValue("123456789ABCDEF0", 0), 0x123456789ABCDEF0U);
    EXPECT_EQ(NMEA::parseStringHexValue("4B4540014C", 0, 5), "KEL");
}

TEST(Nmea, NamesForInstruments)
{
    EXPECT_EQ(NMEA::name("Gr\xc3\xb8n 4+b,*"), "Gr--n 4+b--");
}

TEST(Nmea, AisPayloadOfAPublishedMessage)
{
    // The published decoding of this message: type 1, MMSI 227006760, course 36.7.
    BitBuffer bits;
    for (const char c : std::string_view("13HOI:0P0000VOHLCnHQKwvL05Ip")) {
        bits.append(NMEA::sixBitToBinary(c), 6);
        EXPECT_EQ(NMEA::binaryToSixBit(NMEA::sixBitToBinary(c)), c);
    }
    EXPECT_EQ(bits.size(), 168U);
    EXPECT_EQ(NMEA::getUnsignedBits(bits, 0, 6), 1U);
    EXPECT_EQ(NMEA::getUnsignedBits(bits, 8, 30), 227006760U);
    EXPECT_EQ(NMEA::getUnsignedBits(bits, 116, 12), 367U);
    EXPECT_EQ(NMEA::getUnsignedBits(bits, 139, 30), 0U) << "one bit beyond the end";
    EXPECT_EQ(NMEA::getUnsignedBits(bits, 139, 0), 0U);

    bits.removeLast(40);
    EXPECT_EQ(NMEA::getUnsignedBits(bits, 116, 12), 367U);
    EXPECT_EQ(NMEA::getUnsignedBits(bits, 117, 12), 0U);
    bits.append(0x3F, 6);
    EXPECT_EQ(NMEA::getUnsignedBits(bits, 124, 10), 0x3FFU) << "the last four bits are ones too";
}

TEST(Nmea, AisTextIsTrimmedAndPaddingBlanked)
{
    BitBuffer bits;
    for (const char c : std::string_view(" EVER D1@@"))
        bits.append(NMEA::asciiToBinary(c), 6);
    EXPECT_EQ(NMEA::getAsciiBits(bits, 0, 60), "EVER D1");
    EXPECT_EQ(NMEA::getAsciiBits(bits, 6, 60), "");
    EXPECT_EQ(NMEA::asciiToBinary('a'), 1);
}

TEST(Nmea, TimeOfDayOnTheGivenDay)
{
    using namespace std::chrono;
    const system_clock::time_point now = sys_days(2024y / March / 9) + hours(3);
    EXPECT_EQ(NMEA::dateFromUtc("235959.50", now),
              sys_days(2024y / March / 9) + hours(23) + minutes(59) + milliseconds(59500));
    for (const auto bad : {"", "2359", "245959", "236059", "2359-1", "ab5959"})
        EXPECT_EQ(NMEA::dateFromUtc(bad, now), std::nullopt) << bad;

    ::setenv("TZ", "XST-05:30", 1); // five and a half hours ahead
    ::tzset();
    EXPECT_EQ(NMEA::formatUtcToLocal("224501", now), "04:15:01");
    EXPECT_EQ(NMEA::formatUtcToLocal("bad", now), "");
    ::unsetenv("TZ");
    ::tzset();
}

TEST(Nmea, TablesAreKeyedByCommandOrGroupNumber)
{
    const SentenceTable<int> table{{"RMC", 1}, {"GLL", 2}, {"129025", 3}};
    ASSERT_TRUE(NMEA::nmeaWithData("$XXGLL,", table));
    EXPECT_EQ(*NMEA::nmeaWithData("$XXGLL,", table), 2);
    EXPECT_EQ(NMEA::nmeaWithData("$GPGL", table), nullptr);
    EXPECT_EQ(*NMEA::nmeaWithPGN(129025, table), 3);
    EXPECT_EQ(NMEA::nmeaWithKey(std::nullopt, table), nullptr);
}

TEST(SentenceText, WrittenLinesCarryOneChecksumAndOneLineEnd)
{
    EXPECT_EQ(completeSentence("$RATTM,07,,,,,,,,,N,,L,,,", AddChecksum::Yes),
              "$RATTM,07,,,,,,,,,N,,L,,,*77\r\n");
    EXPECT_EQ(completeSentence("$A*00\r\n", AddChecksum::Yes), "$A*00\r\n");
    EXPECT_EQ(completeSentence("$A", AddChecksum::No), "$A\r\n");
    EXPECT_EQ(completeSentence("", AddChecksum::Yes), "*00\r\n");
}

} // namespace
} // namespace kelvox
