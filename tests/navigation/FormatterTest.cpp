#include "base/Strings.h"
#include "navigation/PositionFormatter.h"
#include "navigation/ValueFormatters.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace kelvox {
namespace {

TEST(PositionFormatter, WritesEveryFormat)
{
    struct Row {
        int format;
        int axis;
        double degrees;
        const char* text;
    };
    const Row rows[] = {
        {0, 0, 59.205750, "59\u00B012.345'N"},
        {0, 1, -10.205750, "010\u00B012.345'W"},
        {1, 0, -59.205750, "S59.12.345"},
        {1, 1, 10.205750, "E010.12.345"},
        {2, 0, 9.5, "09.500000N"},
        {2, 1, -122.4, "122.400000W"},
        {3, 0, -33.5, "33\u00B030'00.0\"S"},
        {3, 1, 151.2052777, "151\u00B012'19.0\"E"},
        {0, 0, 0, "00\u00B000.000'N"},
        {0, 1, 0, "000\u00B000.000'W"}, // zero is west, unlike the equator
        {3, 0, 10 + 59 / 60.0 + 59.97 / 3600, "10\u00B059'59.9\"N"},
        {0, 0, 9.9999999, "09\u00B060.000'N"}, // sixty minutes may show
        {7, 0, 12, ""},
        {0, 0, noCoordinate, ""},
        {0, 1, 4e9, "4000000000\u00B000.000'E"}, // nowhere, but no number is too large
        {3, 0, -4e9, "4000000000\u00B000'00.0\"S"},
        {0, 0, std::nan(""), ""},
    };
    UnitsModel units;
    for (const auto& row : rows) {
        units.positionFormatUnits = row.format;
        EXPECT_EQ(NSPositionFormatter(row.axis, englishStrings(), units)
                      .stringForObjectValue(row.degrees),
                  row.text);
    }
    units.positionFormatUnits = 0;
    NSPositionFormatter latitude(0, englishStrings(), units);
    latitude.setAlign(true);
    latitude.setPositionFormat1MinutesHighPrecision(false);
    EXPECT_EQ(latitude.stringForObjectValue(59.205750), "  59\u00B012.35'N");
    EXPECT_EQ(latitude.nmeaFormat(-59.205750), "5912.345");
    EXPECT_EQ(latitude.nmeaFormat(48.99999999), "4900.000");
    EXPECT_EQ(NSPositionFormatter(1, englishStrings(), units).nmeaFormat(1.5), "00130.000");
    EXPECT_EQ(latitude.nmeaFormat(4e15), "400000000000000000.000");
    EXPECT_EQ(latitude.nmeaFormat(1e308), "");
}

TEST(PositionFormatter, ReadsBackWhatItShowsAllOverTheGlobe)
{
    std::mt19937 random(11);
    UnitsModel units;
    for (int format = 0; format < 4; ++format) {
        units.positionFormatUnits = format;
        for (int options = 0; options < 4; ++options) {
            const double resolution[] = {options & 1 ? 0.5e-3 / 60 : 0.5e-2 / 60, 0.5e-3 / 60,
                                         0.5e-6, 0.1 / 3600};
            for (int axis = 0; axis < 2; ++axis) {
                NSPositionFormatter formatter(axis, englishStrings(), units);
                formatter.setPositionFormat1MinutesHighPrecision(options & 1);
                formatter.setAlign(options & 2);
                const double limit = axis ? 180 : 90;
                std::uniform_real_distribution<> anywhere(-limit, limit);
                for (int i = 0; i < 4000; ++i) {
                    double value = anywhere(random);
                    if (i < 400) // whole degrees and their near neighbours
                        value = (i % 180 - 90) * limit / 90 + (i % 3 - 1) * 1e-8;
                    value = std::clamp(value, -limit, limit);
                    const auto text = formatter.stringForObjectValue(value);
                    const auto back = formatter.getObjectValue(text);
                    ASSERT_TRUE(back) << text << ": " << back.error().message;
                    ASSERT_NEAR(*back, value, resolution[format] * 1.001) << text;
                }
            }
        }
    }
}

TEST(PositionFormatter, AcceptsOldMarksAndNamesTheFault)
{
    struct Row {
        int format;
        int axis;
        const char* text;
        double value; ///< noCoordinate where the text is refused
        const char* key;
        const char* why;
    };
    const double refused = noCoordinate;
    const Row rows[] = {
        {0, 0, "59*30.0'S", -59.5, "", "asterisk"},
        {0, 0, "59\u00BC30.0S", -59.5, "", "quarter sign, no minute mark"},
        {0, 0, "590xBC30.0S", -59.5, "", "escaped byte, its zero not a digit of the degrees"},
        {0, 1, " 010 30.0 e ", 10.5, "", "blanks, small letter"},
        {1, 0, "N12.30.5", 12.508333, "", "second point belongs to the minutes"},
        {2, 1, "122.5\u00B0W", -122.5, "", "degree sign on decimals"},
        {3, 0, "10*30'36S", -10.51, "", "no seconds mark"},
        {0, 0, "90*00.000N", 90, "", "the pole"},
        {0, 0, "90*00.001N", refused, "NSInvalidLatitudeRange1", "beyond the pole"},
        {2, 1, "180.000001E", refused, "NSInvalidLongitudeRange1", "beyond the date line"},
        {0, 0, "59*60.001N", refused, "NSInvalidLatitudeRange2", "minutes"},
        {3, 1, "59*59'60.1W", refused, "NSInvalidLongitudeRange3", "seconds"},
        {0, 0, "59*30.0'E", refused, "NSInvalidLatitudeFormat1", "letter of the other axis"},
        {0, 0, "59*30.0'", refused, "NSInvalidLatitudeFormat1", "no letter"},
        {1, 1, "10.30.5E", refused, "NSInvalidLongitudeFormat2", "letter last"},
        {2, 0, "-12.5", refused, "NSInvalidLatitudeFormat3", "sign"},
        {2, 0, "12.5NN", refused, "NSInvalidLatitudeFormat3", "text behind the letter"},
        {3, 1, "", refused, "NSInvalidLongitudeFormat4", "nothing"},
        {3, 1, "10*30'W", refused, "NSInvalidLongitudeFormat4", "seconds missing"},
        {0, 0, "infN", refused, "NSInvalidLatitudeFormat1", "a word that number readers know"},
    };
    UnitsModel units;
    const Strings keys; // every key stands for itself
    for (const auto& row : rows) {
        units.positionFormatUnits = row.format;
        const auto value = NSPositionFormatter(row.axis, keys, units).getObjectValue(row.text);
        if (row.value == refused) {
            ASSERT_FALSE(value) << row.why;
            EXPECT_EQ(value.error().message, row.key) << row.why;
            EXPECT_NE(englishStrings().text(row.key), row.key) << "has a text";
        } else {
            ASSERT_TRUE(value) << row.why;
            EXPECT_NEAR(*value, row.value, 1e-6) << row.why;
        }
    }
    EXPECT_TRUE(NSPositionFormatter::isPartialStringValid("1234.5NSWE"));
    EXPECT_FALSE(NSPositionFormatter::isPartialStringValid("12-"));
}

TEST(ValueFormatters, WriteEveryUnit)
{
    UnitsModel units;
    const auto show = [](const ValueFormatter& formatter, double value) {
        return formatter.stringForObjectValue(value);
    };
    const NSSogFormatter sog(units);
    const NSAwsFormatter aws(units);
    const NSTmpFormatter temperature(units);
    const NSDptFormatter depth(units);
    const char* speeds[] = {"10.0 KTS", "11.5 MPH", "18.5 KM/H", ""};
    const char* winds[] = {"10.0 KTS", "11.5 MPH", "18.5 KP/H", "5.1 m/s"};
    const char* temperatures[] = {"68\u00B0F", "20\u00B0C", "293K", ""};
    const char* depths[] = {"12,345.6'", "3,762.9 m", "2,056.8 ftm", ""};
    for (int unit = 0; unit < 4; ++unit) {
        units.boatSpeedUnits = units.windSpeedUnits = unit;
        units.temperatureUnits = units.waterDepthUnits = unit;
        EXPECT_EQ(show(sog, 10), speeds[unit]);
        EXPECT_EQ(show(aws, 10), winds[unit]);
        EXPECT_EQ(show(temperature, 68), temperatures[unit]);
        EXPECT_EQ(show(depth, 12345.6), depths[unit]);
    }
    units.boatSpeedUnits = 0;
    NSSogFormatter bare(units);
    bare.setShowUnits(false);
    EXPECT_EQ(show(bare, 7.25), "7.2");
    EXPECT_EQ(show(bare, noValue), "");

    const char* nearby[] = {"3,040'", "927 m", "0.50 NM", "0.93 KM", "0.58 mi", ""};
    const char* far[] = {"1,234.50 NM", "1,234.50 NM", "1,234.50 NM",
                         "2,286.29 KM", "1,421.65 mi", ""};
    const char* nearTrack[] = {"3,040'", "927 m", "0.50 NM ", "0.93 KM ", "0.58 mi ", ""};
    const char* farTrack[] = {"2.00 NM ", "2.00 NM ", "2.00 NM ", "3.70 KM ", "2.30 mi ", ""};
    const char* lengths[] = {"100.0'", "30.5 m", "100.0'", "30.5 m", "100.0'", "100.0'"};
    NSDtwFormatter distance(units);
    const NSXteFormatter crossTrack(units);
    for (int unit = 0; unit < 6; ++unit) {
        units.surfaceDistanceUnits = unit;
        EXPECT_EQ(show(distance, 0.5), nearby[unit]);
        EXPECT_EQ(show(distance, 1234.5), far[unit]);
        EXPECT_EQ(show(crossTrack, 0.5), nearTrack[unit]);
        EXPECT_EQ(show(crossTrack, 2), farTrack[unit]);
        EXPECT_EQ(show(NSLenFormatter(units), 100), lengths[unit]);
    }
    EXPECT_EQ(show(distance, -0.1), "---");
    EXPECT_EQ(show(distance, noValue), "---");
    EXPECT_EQ(show(crossTrack, noValue), "");
    units.surfaceDistanceUnits = 0;
    distance.setShowFeet(false);
    EXPECT_EQ(show(distance, 0.5), "1,013 YDS");
    distance.setShowSign(true);
    distance.setShowFractional(false);
    EXPECT_EQ(show(distance, 1234.4), "+1,234 NM");
}

TEST(ValueFormatters, WriteAnglesAndTimes)
{
    const Strings strings = {
        {"NSTrue", "T"}, {"NSMag", "M"}, {"NSPort", "P"}, {"NSStarboard", "S"}};
    const UnitsModel units;
    NSCogFormatter course(strings, units);
    EXPECT_EQ(course.stringForObjectValue(5.4), "005\u00B0 T");
    EXPECT_EQ(course.stringForObjectValue(359.7), "359\u00B0 T"); // never 360
    EXPECT_EQ(course.stringForObjectValue(-1), "");
    course.setVariation(12);
    EXPECT_EQ(course.stringForObjectValue(5), "005\u00B0 M"); // says M whenever there is variation
    course.setMagnetic(true);
    EXPECT_EQ(course.stringForObjectValue(5), "353\u00B0 M");

    const NSEtaFormatter eta(units);
    const std::pair<double, const char*> times[] = {
        {noValue, ""},      {0, "---"},      {-2, "---"},      {0.5 / 60, ":30"},
        {1.0 / 60, "0:01"}, {1.999, "1:59"}, {30.25, "30:15"}, {HUGE_VAL, "---"},
    };
    for (const auto& [hours, text] : times)
        EXPECT_EQ(eta.stringForObjectValue(hours), text) << hours;

    const NSAwaFormatter angle(strings, units);
    EXPECT_EQ(angle.stringForObjectValue(-45), "045\u00B0 P");
    EXPECT_EQ(angle.stringForObjectValue(1), "001\u00B0 S");
    EXPECT_EQ(angle.stringForObjectValue(-0.6), "001\u00B0 ");

    EXPECT_EQ(ValueFormatter::getObjectValue(" 12.5").value_or(-1), 12.5);
    for (const char* refused : {"", "12.5 KTS", "12.5 ", "1,234", "nan", "+-1", "0x10"})
        EXPECT_FALSE(ValueFormatter::getObjectValue(refused)) << refused;
}

TEST(UnitsModel, KeepsItsEightSettings)
{
    UnitsModel units;
    int UnitsModel::*fields[] = {
        &UnitsModel::positionFormatUnits, &UnitsModel::surfaceDistanceUnits,
        &UnitsModel::waterDepthUnits,     &UnitsModel::boatSpeedUnits,
        &UnitsModel::windSpeedUnits,      &UnitsModel::temperatureUnits,
        &UnitsModel::fuelUnits,           &UnitsModel::modeUnits,
    };
    for (int i = 0; i < 8; ++i)
        units.*fields[i] = i + 1;
    MemorySettings settings;
    units.saveSettings(settings);
    EXPECT_EQ(settings.integer("windSpeedUnits"), 5);
    UnitsModel again;
    again.loadSettings(settings);
    for (int i = 0; i < 8; ++i)
        EXPECT_EQ(again.*fields[i], i + 1);
}

} // namespace
} // namespace kelvox
