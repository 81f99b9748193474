#include "weather/GribModel.h"

#include "base/File.h"
#include "base/NoValue.h"
#include "base/Settings.h"
#include "support/GribWriter.h"
#include "support/TemporaryFolder.h"
#include "weather/GribController.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>

namespace kelvox {
namespace {
std::string uniform(GribSpec spec, double value)
{
    spec.values.assign(spec.values.size(), value);
    return GribWriter::message(spec);
}

GribTime at(int hour)
{
    using namespace std::chrono;
    return sys_days(2024y / June / 15) + hours(hour);
}

class GribModelTest : public ::testing::Test {
protected:
    void load(const std::string& bytes)
    {
        const auto loaded = model.loadBytes(bytes, "test");
        ASSERT_TRUE(loaded) << loaded.error().message;
    }
    UnitsModel units;
    GribModel model{units};
};
} // namespace

TEST(GribPoints, SpeedAndDirectionKeepTheirOddities)
{
    // north, east: knots, degrees that the wind comes from
    struct Row {
        float a, b, speed, direction;
    };
    const float root = std::sqrt(0.5F);
    const Row rows[] = {
        {10 * root, 10 * root, 19.438F, 225},
        {-10 * root, 10 * root, 19.438F, 315},
        {-10 * root, -10 * root, 19.438F, 45},
        {10 * root, -10 * root, 19.438F, 135},
        {10, 0, 0, 0}, // due south, yet nothing
        {missingGridValue, 5, 0, 0},
        {5, missingGridValue, 0, 0},
    };
    for (const auto& row : rows) {
        EXPECT_NEAR(uvSpeed(row.a, row.b), row.speed, 1e-4) << row.a << " " << row.b;
        EXPECT_NEAR(uvDirection(row.a, row.b), row.direction, 1e-4) << row.a << " " << row.b;
    }
    EXPECT_TRUE(std::isnan(uvSpeed(0, 5)));
    EXPECT_EQ(uvDirection(0, 5), 270);

    // What is drawn has none of that.
    const GribVector southerly{.east = 0, .north = 10};
    EXPECT_NEAR(southerly.knots(), 19.438, 1e-4);
    EXPECT_EQ(southerly.fromDegrees(), 180);
    EXPECT_EQ((GribVector{.east = 5, .north = 0}).fromDegrees(), 270);
}

TEST_F(GribModelTest, ConvertsByTheUsersUnits)
{
    struct Row {
        int temperatureUnits;
        float value, expected;
    };
    const Row temperatures[] = {
        {UnitsModel::Fahrenheit, 300, 80.312F}, {UnitsModel::Celsius, 300, 26.84F},
        {UnitsModel::Kelvin, 300, 300},         {UnitsModel::Celsius, 15, 15},
        {UnitsModel::Fahrenheit, 15, 59},       {UnitsModel::Kelvin, 15, 15},
        {UnitsModel::Kelvin, -60, 213.15F},
    };
    for (const auto& row : temperatures) {
        units.temperatureUnits = row.temperatureUnits;
        EXPECT_NEAR(model.temperature(row.value), row.expected, 2e-3) << row.value;
    }
    const float heights[] = {3.28084F, 1, 3.28084F, 1, 3.28084F, 0};
    for (int code = 0; code < 6; ++code) {
        units.surfaceDistanceUnits = code;
        EXPECT_FLOAT_EQ(model.height(1), heights[code]) << code;
    }
    const float rates[] = {0.0141732F, 0.036F, 0.036F}; // of 1e-4 mm/s: in/h, cm/h, cm/h
    for (int code = 0; code < 3; ++code) {
        units.temperatureUnits = code;
        EXPECT_FLOAT_EQ(model.rate(1e-4F), rates[code]) << code;
    }
    const std::pair<double, int> forces[] = {{0, 0},  {3, 1},  {4, 2},   {10, 3},  {17, 5},
                                             {33, 7}, {34, 8}, {63, 11}, {64, 12}, {200, 12}};
    for (const auto& [knots, force] : forces)
        EXPECT_EQ(GribModel::beaufortIndex(knots), force) << knots;
    EXPECT_EQ(GribModel::beaufortIndex(NAN), -1);
}

TEST_F(GribModelTest, GathersByPositionAndTime)
{
    load(uniform({.parameter = 34, .p1 = 12}, 1) + uniform({.p1 = 12}, 2) + uniform({.p1 = 6}, 3)
         + uniform({.parameter = 34, .p1 = 6, .longitude = -4500, .lastLongitude = -3500}, 4)
         + uniform({.parameter = 180}, 5) + GribWriter::message({.gridType = 4}));
    EXPECT_EQ(model.forecastDates(), (std::vector{at(18), at(24)}));
    ASSERT_EQ(model.points().size(), 3U);
    EXPECT_FALSE(model.points()[0]->hasWind()); // u and v of two grids
    EXPECT_TRUE(model.points()[2]->hasWind());
    EXPECT_NEAR(model.points()[2]->windSpeed(0), std::sqrt(5) * 1.9438, 1e-4);
    ASSERT_EQ(model.skipped().size(), 1U);
    EXPECT_EQ(model.skipped()[0].reason, "Gaussian grid");
    ASSERT_EQ(model.ignored().size(), 1U);

    GribController controller(model);
    EXPECT_FALSE(controller.canBarb());
    EXPECT_TRUE(controller.nextForecast());
    EXPECT_TRUE(controller.canBarb());
    EXPECT_FALSE(controller.canContour());
    EXPECT_FALSE(controller.nextForecast());
    controller.play(100); // begins again at the first
    EXPECT_EQ(model.viewedDate(), at(18));
    EXPECT_FALSE(controller.tick(100.5));
    EXPECT_TRUE(controller.tick(101));
    EXPECT_EQ(model.viewedDate(), at(24));
}

TEST_F(GribModelTest, TheSurfaceGoesBeforeWhatIsAloft)
{
    const std::string low = uniform({}, 5);
    const std::string aloft = uniform({.levelType = 100, .level = 500}, 40);
    for (const auto& bytes : {low + aloft, aloft + low}) {
        load(bytes);
        EXPECT_EQ(model.points()[0]->values(GribField::WindU)[0], 5);
        EXPECT_EQ(model.ignored().size(), 1U);
    }
    // The same number means snow in a table of another centre.
    load(uniform({.centre = 98, .table = 128}, 5));
    EXPECT_TRUE(model.points().empty());
}

TEST_F(GribModelTest, InterpolatesInSpaceAndTime)
{
    // Columns 0 4 8, rows alike; three hours later 10 more; crossing the date line.
    GribSpec spec{.parameter = 2,
                  .longitude = 179500,
                  .lastLongitude = -179500,
                  .values = {0.0, 4.0, 8.0, 0.0, 4.0, 8.0}};
    GribSpec later = spec;
    later.p1 = 9;
    for (auto& value : later.values)
        *value += 10;
    spec.parameter = later.parameter = 103;
    load(GribWriter::message(spec) + GribWriter::message(later));
    const auto period = [&](double longitude, GribTime time) {
        return model.valuesAt({longitude, 49.75}, time)[GribField::WavePeriod];
    };
    EXPECT_NEAR(period(180, at(18)).value(), 4, 1e-6);
    EXPECT_NEAR(period(-179.75, at(18)).value(), 6, 1e-6);
    EXPECT_NEAR(period(-179.5, at(18)).value(), 8, 1e-6);
    EXPECT_NEAR(period(180.5, at(19)).value(), 8 + 10 / 3.0, 1e-6);
    EXPECT_FALSE(period(-179.4, at(18)));
    EXPECT_FALSE(period(180, at(17)));
    EXPECT_FALSE(period(180, at(22)));

    // Directions go the short way round; missing points yield to those that are there.
    spec.parameter = 107;
    spec.values = {350.0, 10.0, {}, 350.0, 10.0, {}};
    load(GribWriter::message(spec));
    const auto direction = [&](double longitude) {
        return model.valuesAt({longitude, 50}, at(18))[GribField::WaveDirection];
    };
    EXPECT_NEAR(std::remainder(direction(179.75).value(), 360), 0, 1e-4);
    EXPECT_NEAR(direction(-179.8).value(), 10, 1e-4);
    EXPECT_FALSE(direction(-179.6));
}

TEST_F(GribModelTest, GlobalGridsCloseAroundTheEarth)
{
    GribSpec spec{.parameter = 2,
                  .columns = 36,
                  .longitude = 0,
                  .lastLongitude = 350000,
                  .columnStep = 10000,
                  .decimalScale = 0,
                  .bits = 16,
                  .values = {}};
    for (int i = 0; i < 72; ++i)
        spec.values.emplace_back(100000 + 10 * (i % 36));
    load(GribWriter::message(spec));
    EXPECT_TRUE(model.points()[0]->grid().wraps());
    const auto pressure = model.valuesAt({-5, 50}, at(18))[GribField::Pressure];
    EXPECT_NEAR(pressure.value(), (100350 + 100000) / 2.0, 1e-3);
}

TEST_F(GribModelTest, FilesOpenPlainAndPacked)
{
    const TemporaryFolder folder;
    const auto path = folder.path() / "it's $(a) file.grb";
    ASSERT_TRUE(writeFileAtomically(path, "from: mail\n" + uniform({}, 7)));
    ASSERT_TRUE(model.loadGrib(path));
    EXPECT_EQ(model.points().size(), 1U);
    if (std::system("command -v bzip2 >/dev/null") != 0)
        GTEST_SKIP() << "no bzip2 here";
    const auto packed = path.string() + ".bz2";
    ASSERT_EQ(std::system(("cd '" + folder.path().string() + "' && bzip2 *.grb").c_str()), 0);
    ASSERT_TRUE(model.loadGrib(packed));
    EXPECT_EQ(model.points()[0]->values(GribField::WindU)[0], 7);
    EXPECT_TRUE(std::filesystem::exists(path));
    EXPECT_FALSE(model.loadGrib(folder.path() / "none.bz2"));
    EXPECT_TRUE(model.points().empty());
}

TEST_F(GribModelTest, WhatAWorkerDrawsStaysWhenTheFileIsClosed)
{
    load(uniform({}, 7));
    GribController weather(model);
    weather.showWaves = false;
    const GribSnapshot shown(weather);
    model.closeGrib();
    EXPECT_TRUE(model.points().empty());
    ASSERT_EQ(shown.model().points().size(), 1U);
    EXPECT_EQ(shown.model().points()[0]->values(GribField::WindU)[0], 7);
    EXPECT_EQ(shown.model().viewedDate(), shown.model().points()[0]->forecastDate());
    EXPECT_FALSE(shown.weather().showWaves);
}

TEST_F(GribModelTest, AStopEndsLoadingWithNothingLoaded)
{
    const TemporaryFolder folder;
    const auto path = folder.path() / "forecast.grb";
    ASSERT_TRUE(writeFileAtomically(path, uniform({}, 7)));
    std::stop_source stop;
    ASSERT_TRUE(model.loadGrib(path, stop.get_token()));
    stop.request_stop();
    for (const char* name : {"forecast.grb", "forecast.grb.bz2"}) {
        ASSERT_TRUE(writeFileAtomically(folder.path() / name, uniform({}, 7)));
        const auto loaded = model.loadGrib(folder.path() / name, stop.get_token());
        ASSERT_FALSE(loaded) << name;
        EXPECT_EQ(loaded.error().code, Error::Code::Cancelled) << name;
        EXPECT_TRUE(model.points().empty());
        EXPECT_TRUE(std::filesystem::exists(folder.path() / name)) << "left as it was";
    }
    EXPECT_EQ(model.loadBytes(uniform({}, 7), "bytes", stop.get_token()).error().code,
              Error::Code::Cancelled);
}

TEST_F(GribModelTest, ManyHugeConstantFieldsDoNotFillTheMemory)
{
    std::string bytes;
    for (int hour = 0; hour < 200; ++hour)
        bytes += GribWriter::message({.p1 = hour,
                                      .columns = 3000,
                                      .rows = 3000,
                                      .latitude = 80000,
                                      .longitude = 0,
                                      .lastLatitude = -80000,
                                      .lastLongitude = 350000,
                                      .columnStep = 0xFFFF,
                                      .rowStep = 0xFFFF,
                                      .bits = 0,
                                      .values = {1.0}});
    load(bytes);
    EXPECT_EQ(model.points().size(), 3U); // of 9 million points each
    EXPECT_EQ(model.skipped().at(0).reason, "more grid points than fit into memory");
}

} // namespace kelvox
