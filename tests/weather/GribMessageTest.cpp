#include "weather/GribMessage.h"

#include "base/NoValue.h"
#include "support/GribWriter.h"

#include <gtest/gtest.h>

#include <cctype>

namespace kelvox {
namespace {
std::span<const std::uint8_t> octets(const std::string& bytes)
{
    return {reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()};
}

std::string fromHex(const std::string& text)
{
    std::string bytes;
    std::string digits;
    for (const char c : text)
        if (std::isxdigit(static_cast<unsigned char>(c)))
            digits += c;
    for (std::size_t i = 0; i + 1 < digits.size(); i += 2)
        bytes += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
    return bytes;
}

GribMessage decoded(const std::string& bytes)
{
    std::size_t offset = 0;
    auto message = readGribMessage(octets(bytes), offset);
    if (!message || !*message) {
        ADD_FAILURE() << (message ? message->error().message : "no message");
        return {};
    }
    return **message;
}

std::vector<float> valuesOf(const std::string& bytes)
{
    const auto values = unpackGribValues(decoded(bytes));
    EXPECT_TRUE(values) << values.error().message;
    return values.value_or(std::vector<float>());
}

GribTime at(int day, int hour, int minute = 0)
{
    using namespace std::chrono;
    return sys_days(2024y / June / day) + hours(hour) + minutes(minute);
}

// Built octet by octet from the published section tables by another program.
const std::string windMessage = fromHex(R"(
    47 52 49 42 00 00 5A 01 00 00 1C 02 07 60 FF 80 21 69 00 0A 18 06 0F 0C 00 01 06 00 00 00 00 00
    15 00 00 01 00 00 20 00 FF 00 00 03 00 02 00 C3 50 80 13 88 80 00 C1 5C 80 0F A0 01 F4 01 F4 00
    00 00 00 00 00 00 12 02 00 00 C2 47 00 00 09 3C 89 08 EA D0 01 78 37 37 37 37)");
const std::string pressureMessage = fromHex(R"(
    47 52 49 42 00 00 60 01 00 00 1C 02 07 60 FF C0 02 66 00 00 18 06 0F 0C 00 01 06 00 00 00 00 00
    15 00 00 00 00 00 20 00 FF 00 00 03 00 02 00 C1 5C 80 13 88 80 00 C3 50 80 0F A0 01 F4 01 F4 40
    00 00 00 00 00 00 08 0A 00 00 D4 00 00 00 10 08 00 02 45 18 A2 40 08 6A 64 00 4B 00 37 37 37 37
    )");
} // namespace

TEST(GribMessage, ReadsThePublishedExamples)
{
    const auto wind = decoded(windMessage);
    EXPECT_EQ(wind.parameter, 33);
    EXPECT_EQ(describe(wind.level), "10 m above ground");
    EXPECT_EQ(wind.referenceTime, at(15, 12));
    EXPECT_EQ(wind.forecastTime, at(15, 18));
    EXPECT_EQ(wind.grid, (GribGrid{{-5, 50}, -0.5, 0.5, 2, 3}));
    EXPECT_EQ(valuesOf(windMessage), (std::vector{5.0F, -3.5F, 0.0F, 10.2F, -7.1F, 2.3F}));

    const auto pressure = decoded(pressureMessage);
    EXPECT_EQ(pressure.grid, (GribGrid{{-5, 49.5}, 0.5, 0.5, 2, 3}));
    EXPECT_EQ(valuesOf(pressureMessage),
              (std::vector{101324.0F, 101300.0F, missingGridValue, 100900.0F, missingGridValue,
                           101200.0F}));

    // Edition 0 has no decimal scale, so that the same octets mean ten times as much.
    std::string old = "GRIB" + windMessage.substr(8, 24) + windMessage.substr(36);
    old[6] = 24;
    old[7] = 0;
    const auto message = decoded("some text before it" + old);
    EXPECT_EQ(message.edition, 0);
    EXPECT_EQ(message.forecastTime, at(15, 18));
    EXPECT_EQ(valuesOf(old), (std::vector{50.0F, -35.0F, 0.0F, 102.0F, -71.0F, 23.0F}));
}

TEST(GribMessage, FindsMessagesInSurroundingBytes)
{
    const std::string bytes = "GRIB file from the mail\nGGRG" + windMessage + "xGR" + windMessage
        + std::string(480, 'G') + GribWriter::message({.edition = 0}) + windMessage + "GRIBGRI";
    std::vector<std::size_t> offsets;
    std::size_t offset = 0;
    while (const auto message = readGribMessage(octets(bytes), offset)) {
        if (*message)
            offsets.push_back((*message)->offset);
        else
            EXPECT_EQ(message->error().code, Error::Code::Truncated); // the end of the file
    }
    EXPECT_EQ(
        offsets,
        (std::vector<std::size_t>{28, 121, 691, 691 + GribWriter::message({.edition = 0}).size()}));
}

TEST(GribMessage, EveryScanningModeComesOutInOneOrder)
{
    // a b c in the northern row, d e f in the southern one
    struct Row {
        int scanning;
        std::vector<int> order;
    };
    const std::vector<int> northFirst = {1, 2, 3, 4, 5, 6};
    const std::vector<int> southFirst = {4, 5, 6, 1, 2, 3};
    const Row rows[] = {
        {0x00, {1, 2, 3, 4, 5, 6}}, {0x80, {3, 2, 1, 6, 5, 4}}, {0x40, {4, 5, 6, 1, 2, 3}},
        {0xC0, {6, 5, 4, 3, 2, 1}}, {0x20, {1, 4, 2, 5, 3, 6}}, {0xA0, {3, 6, 2, 5, 1, 4}},
        {0x60, {4, 1, 5, 2, 6, 3}}, {0xE0, {6, 3, 5, 2, 4, 1}},
    };
    for (const auto& row : rows) {
        GribSpec spec{.scanning = row.scanning, .values = {}};
        for (const int value : row.order)
            spec.values.emplace_back(value);
        if (row.scanning & 0x80)
            std::swap(spec.longitude, spec.lastLongitude);
        if (row.scanning & 0x40)
            std::swap(spec.latitude, spec.lastLatitude);
        const std::string bytes = GribWriter::message(spec);
        const auto grid = decoded(bytes).grid;
        EXPECT_EQ(grid.first.longitude, -5) << row.scanning;
        EXPECT_EQ(grid.first.latitude, row.scanning & 0x40 ? 49.5 : 50) << row.scanning;
        EXPECT_EQ(grid.latitudeIncrement, row.scanning & 0x40 ? 0.5 : -0.5) << row.scanning;
        const auto values = valuesOf(bytes);
        EXPECT_EQ(std::vector<int>(values.begin(), values.end()),
                  row.scanning & 0x40 ? southFirst : northFirst)
            << row.scanning;
    }
}

TEST(GribMessage, ForecastTimeFollowsUnitAndRange)
{
    struct Row {
        int unit, p1, p2, range;
        GribTime valid;
    };
    const Row rows[] = {
        {1, 0, 0, 0, at(15, 12)},        {1, 72, 0, 0, at(18, 12)},
        {0, 90, 0, 0, at(15, 13, 30)},   {2, 2, 0, 0, at(17, 12)},
        {10, 3, 0, 0, at(15, 21)},       {11, 1, 0, 0, at(15, 18)},
        {12, 1, 0, 0, at(16, 0)},        {13, 5, 0, 0, at(15, 13, 15)},
        {14, 3, 0, 0, at(15, 13, 30)},   {1, 0, 6, 4, at(15, 18)}, // a sum is valid at its end
        {1, 6, 12, 2, at(16, 0)},        {1, 6, 12, 1, at(15, 12)}, // initialised analysis
        {1, 1, 8, 10, at(26, 12)}, // one number of 16 bits: 264 hours
        {254, 240, 0, 0, at(15, 12, 4)},
    };
    for (const auto& row : rows) {
        const GribSpec spec{.timeUnit = row.unit, .p1 = row.p1, .p2 = row.p2, .range = row.range};
        EXPECT_EQ(decoded(GribWriter::message(spec)).forecastTime, row.valid)
            << row.unit << " " << row.p1 << " " << row.p2 << " " << row.range;
    }
    using namespace std::chrono;
    EXPECT_EQ(decoded(GribWriter::message({.year = 2000})).referenceTime,
              sys_days(2000y / June / 15) + 12h); // year 100 of the 20th century
    EXPECT_EQ(
        decoded(GribWriter::message({.month = 1, .day = 31, .timeUnit = 3, .p1 = 1})).forecastTime,
        sys_days(2024y / February / 29) + 12h);
}

TEST(GribMessage, LevelsAreOneNumberOrTwo)
{
    EXPECT_EQ(describe(decoded(GribWriter::message({.levelType = 100, .level = 500})).level),
              "500 hPa");
    const auto layer = decoded(GribWriter::message({.levelType = 101, .level = 0x321E})).level;
    EXPECT_EQ(layer.top, 50);
    EXPECT_EQ(layer.bottom, 30);
}

TEST(GribMessage, CornersSayRoundedIncrementsBetter)
{
    // 1/12 degree is written as 83: over 121 points that is 0.04 degrees short.
    GribSpec spec{.columns = 121,
                  .rows = 1,
                  .longitude = 170000,
                  .lastLongitude = 180000,
                  .columnStep = 83,
                  .values = std::vector<std::optional<double>>(121, 1.0)};
    EXPECT_DOUBLE_EQ(decoded(GribWriter::message(spec)).grid.longitudeIncrement, 10.0 / 120);
    spec.columnStep = 0xFFFF;
    spec.lastLongitude = -174000; // across the date line
    EXPECT_DOUBLE_EQ(decoded(GribWriter::message(spec)).grid.longitudeIncrement, 16.0 / 120);
    spec.columnStep = 0x8000 | 133; // some writers give a sign too
    EXPECT_DOUBLE_EQ(decoded(GribWriter::message(spec)).grid.longitudeIncrement, 16.0 / 120);
    spec.columnStep = 100; // contradicts the corner
    EXPECT_DOUBLE_EQ(decoded(GribWriter::message(spec)).grid.longitudeIncrement, 0.1);
}

TEST(GribMessage, OtherKindsAreNamedAndSkipped)
{
    struct Row {
        GribSpec spec;
        const char* reason;
    };
    const Row rows[] = {
        {{.gridType = 4}, "Gaussian grid"},
        {{.gridType = 10}, "rotated latitude/longitude grid"},
        {{.gridType = 50}, "spherical harmonics"},
        {{.columns = 0xFFFF}, "reduced latitude/longitude grid"},
        {{.packing = 0x40}, "second-order packing"},
        {{.packing = 0x80}, "spherical harmonics"},
        {{.timeUnit = 77}, "time unit 77"},
    };
    for (const auto& row : rows) {
        const std::string bytes = GribWriter::message(row.spec) + windMessage;
        std::size_t offset = 0;
        const auto refused = readGribMessage(octets(bytes), offset);
        ASSERT_TRUE(refused && !*refused) << row.reason;
        EXPECT_EQ(refused->error().code, Error::Code::Unsupported);
        EXPECT_EQ(refused->error().message, row.reason);
        const auto next = readGribMessage(octets(bytes), offset);
        EXPECT_TRUE(next && *next) << "the message after " << row.reason;
    }
}

TEST(GribMessage, HostileFieldsAreRefused)
{
    const GribSpec rows[] = {
        {.rows = 0},
        {.rows = 60000, .lastLatitude = 50000, .columnStep = 0, .rowStep = 0},
        {.columns = 40000,
         .rows = 40000,
         .lastLatitude = -50000,
         .lastLongitude = 5000,
         .columnStep = 0xFFFF,
         .rowStep = 0xFFFF,
         .bits = 0},
        {.month = 13},
        {.latitude = 95000, .lastLatitude = 94500},
        {.columns = 30, .columnStep = 32000},
        {.bits = 60},
        {.decimalScale = -400},
    };
    for (const auto& spec : rows) {
        const std::string bytes = GribWriter::message(spec);
        std::size_t offset = 0;
        const auto message = readGribMessage(octets(bytes), offset);
        ASSERT_TRUE(message);
        EXPECT_FALSE(*message && unpackGribValues(**message)) << "row " << &spec - rows;
    }
}

TEST(GribMessage, EveryCutAndEveryFlippedByteIsSurvived)
{
    for (const auto& whole : {windMessage, pressureMessage, GribWriter::message({.edition = 0})}) {
        for (std::size_t length = 0; length < whole.size(); ++length) {
            const std::string cut = whole.substr(0, length);
            std::size_t offset = 0;
            const auto message = readGribMessage(octets(cut), offset);
            EXPECT_FALSE(message && *message) << length;
            EXPECT_EQ(offset, length);
        }
        for (std::size_t i = 4; i < whole.size(); ++i)
            for (const int value : {0x00, 0x7F, 0x80, 0xFF}) {
                std::string bytes = whole;
                bytes[i] = static_cast<char>(value);
                std::size_t offset = 0;
                if (const auto message = readGribMessage(octets(bytes), offset);
                    message && *message)
                    (void)unpackGribValues(**message); // sanitizers watch
            }
    }
}

} // namespace kelvox
