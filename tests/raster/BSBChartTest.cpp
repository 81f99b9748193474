#include "raster/BSBChart.h"

#include "raster/SmallChart.h"
#include "support/RealData.h"

#include <gtest/gtest.h>

#include <cmath>

namespace kelvox {
namespace {

TEST(BSBChart, CountsImageRowsFromTheBottom)
{
    const OpenedChart opened(smallChart());
    ASSERT_TRUE(opened.result) << opened.result.error().message;
    const BSBChart& chart = opened.chart;
    const Point point = chart.positionToPoint({.longitude = 25, .latitude = 51});
    EXPECT_NEAR(point.x, 50, 1e-3);
    EXPECT_NEAR(point.y, 9, 1e-3); // 90 rows below the top one of 100
    EXPECT_NEAR(chart.originOnGPSPosition().latitude, 50.1, 1e-5);
    EXPECT_NEAR(chart.originOnGPSPosition().longitude, 20, 1e-5);
    EXPECT_NEAR(chart.extentOnGPSPosition().latitude, 60, 1e-5);
    EXPECT_NEAR(chart.extentOnGPSPosition().longitude, 29.9, 1e-5);
    EXPECT_EQ(chart.extents(), (Rect{20, 50.1, 29.9, 60}));
    EXPECT_TRUE(chart.contains({.longitude = 22, .latitude = 55}));
    EXPECT_FALSE(chart.contains({.longitude = 22, .latitude = 49}));
    EXPECT_EQ(chart.description(), "1 SMALL 1:50000");
    EXPECT_EQ(BSBChart("/charts/D:\\maps\\old.kap").shortName(), "old");
}

TEST(BSBChart, AddsTheDatumShiftToItsPositions)
{
    auto description = smallChart();
    description.latitudeShiftSeconds = 360; // 0.1 degrees
    description.longitudeShiftSeconds = -720;
    const OpenedChart opened(description);
    ASSERT_TRUE(opened.result);
    const Position origin = opened.chart.originOnGPSPosition();
    EXPECT_NEAR(origin.latitude, 50.2, 1e-5);
    EXPECT_NEAR(origin.longitude, 19.8, 1e-5);
    EXPECT_NEAR(opened.chart.positionToPoint(origin).x, 0, 1e-3);
    EXPECT_NEAR(opened.chart.positionToPoint(origin).y, 0, 1e-3);
}

TEST(BSBChart, CrossesTheDateLine)
{
    auto description = smallChart();
    for (auto& point : description.referencePoints)
        point.longitude = point.longitude < 25 ? 175 : -175.1;
    description.border = {{175, 60}, {-175.1, 60}, {-175.1, 50.1}, {175, 50.1}};
    for (const bool printed : {true, false}) { // the shift may be left out of the header
        description.phaseShift.reset();
        if (printed)
            description.phaseShift = 180;
        const OpenedChart opened(description);
        ASSERT_TRUE(opened.result);
        const BSBChart& chart = opened.chart;
        EXPECT_EQ(chart.phaseShift(), 180);
        EXPECT_NEAR(chart.positionToPoint({.longitude = -179, .latitude = 55}).x, 60, 1e-3);
        EXPECT_NEAR(chart.positionToPoint({.longitude = 179, .latitude = 55}).x, 40, 1e-3);
        EXPECT_NEAR(chart.pointToPosition({40, 50}).longitude, 179, 1e-4);
        EXPECT_NEAR(chart.pointToPosition({60, 50}).longitude, -179, 1e-4);
        EXPECT_NEAR(chart.extents().left, 175, 1e-9);
        EXPECT_NEAR(chart.extents().right, 184.9, 1e-9);
        EXPECT_TRUE(chart.contains({.longitude = 180, .latitude = 55}));
    }
}

TEST(BSBChart, MapsALongitudeBesideTheDateLineThroughTheOtherSide)
{
    auto description = smallChart();
    GeoPolynomials same;
    same.wpx = {1, {0, 1, 0}};
    same.wpy = {1, {0, 0, 1}};
    same.pwx = {1, {0, 1, 0}};
    same.pwy = {1, {0, 0, 1}};
    description.polynomials = same;
    description.phaseShift = 0.2;
    const OpenedChart opened(description);
    ASSERT_TRUE(opened.result);
    EXPECT_NEAR(opened.chart.positionToPoint({.longitude = 179.9, .latitude = 0}).x, -179.9, 1e-4);
    // From the pixel the longitude is rounded to single precision before the shift comes off.
    const double shift = 0.2F;
    EXPECT_EQ(opened.chart.pointToPosition({33.3, 0}).longitude, double{33.3F} - shift);
    EXPECT_NEAR(opened.chart.pointToPosition({-179.9, 0}).longitude, 179.9, 1e-4);
}

TEST(BSBChart, TurnsWithTheViewAndStaysNorthUp)
{
    // North to the left, as on a river chart: columns run south, rows run east from the bottom up.
    auto description = smallChart();
    description.height = 50;
    description.skew = 270;
    description.referencePoints = {{0, 0, 60, 24.9}, {99, 0, 50.1, 24.9}, {0, 49, 60, 20}};
    for (const double skew : {270.0, 0.0}) { // 0 is wrong and is found out
        description.skew = skew;
        OpenedChart opened(description);
        ASSERT_TRUE(opened.result);
        EXPECT_NEAR(opened.chart.angle(), 270, 1e-3);
    }
    OpenedChart opened(description);
    for (const double rotate : {0.0, 90.0, 33.0, 215.0}) {
        // The view shows two points a pixel and drops the signs of the diagonal.
        const double turn = (270 + rotate) * M_PI / 180;
        const double x = 200 * std::cos(turn) - 100 * std::sin(turn);
        const double y = 200 * std::sin(turn) + 100 * std::cos(turn);
        opened.chart.setRotate(static_cast<float>(rotate));
        const Point diagonal = opened.chart.rotatedPoint({std::abs(x), std::abs(y)});
        EXPECT_NEAR(diagonal.x, 200, 1e-2) << rotate;
        EXPECT_NEAR(diagonal.y, 100, 1e-2) << rotate;
    }
}

TEST(BSBChart, KnowsNoPlaceWithoutHeaderOrReferencePoints)
{
    BSBChart none("/nowhere/none.kap");
    EXPECT_FALSE(none.readHeader());
    EXPECT_EQ(none.positionToPoint({.longitude = 1, .latitude = 2}), (Point{-10000, -10000}));
    EXPECT_EQ(none.pointToPosition({1, 2}), Position{});

    auto description = smallChart();
    description.referencePoints.clear();
    const OpenedChart opened(description);
    ASSERT_TRUE(opened.result) << "a picture without a place is still a picture";
    EXPECT_FALSE(opened.chart.hasCalibration());
    EXPECT_FALSE(opened.chart.originOnGPSPosition().isKnown());
}

TEST(BSBChart, TakesThePlaceFromACompanionFile)
{
    auto description = smallChart();
    description.referencePoints.clear();
    TemporaryFolder folder;
    const auto path = folder.path() / "old.NOS";
    ASSERT_TRUE(writeFileAtomically(path, writeKap(description, white)));
    ASSERT_TRUE(writeFileAtomically(folder.path() / "old.GEO",
                                    "REF/1,0,0,60,20\nREF/2,99,0,60,29.9\nREF/3,0,99,50.1,20\n"));
    BSBChart chart(path);
    ASSERT_TRUE(chart.readHeader());
    EXPECT_NEAR(chart.positionToPoint({.longitude = 25, .latitude = 51}).x, 50, 1e-3);
}

TEST(BSBChart, ShowsNoPictureOfTheUnpublishedCompression)
{
    auto description = smallChart();
    description.extraLines = "CMP/LZ\r\n";
    const OpenedChart opened(description);
    ASSERT_FALSE(opened.result);
    EXPECT_EQ(opened.result.error().code, Error::Code::Unsupported);
    EXPECT_TRUE(opened.chart.hasCalibration()) << "its frame can be shown";
}

TEST(BSBChart, PutsTheReferencePointsOfRealChartsWhereTheyArePrinted)
{
    const auto folder = realData("raster");
    if (!folder)
        GTEST_SKIP() << "KELVOX_DATA names no real charts";
    int charts = 0;
    for (const auto& entry : std::filesystem::directory_iterator(*folder)) {
        if (entry.path().extension() != ".KAP")
            continue;
        BSBChart chart(entry.path());
        const auto loaded = chart.loadChart();
        ASSERT_TRUE(loaded) << loaded.error().message;
        EXPECT_EQ(chart.pyramid().rows().missingRows(), 0) << entry.path();
        ++charts;
        for (const ReferencePoint& reference : chart.header().referencePoints) {
            const Point point = chart.positionToPoint({reference.longitude, reference.latitude});
            // The polyconic chart's own polynomials leave up to 4.6 pixels over.
            const double limit = chart.projection() == "POLYCONIC" ? 5 : 1.5;
            EXPECT_NEAR(point.x, reference.x, limit) << entry.path();
            EXPECT_NEAR(chart.size().height - 1 - point.y, reference.y, limit) << entry.path();
        }
    }
    EXPECT_GT(charts, 0);
}

} // namespace
} // namespace kelvox
