#include "raster/Polynomial.h"

#include <gtest/gtest.h>

#include <vector>

namespace kelvox {
namespace {

TEST(Polynomial, HasTheTermsOfItsLevel)
{
    // Powers of ten as coefficients and x = 2, y = 3 spell out each term.
    Polynomial polynomial;
    polynomial.coefficients = {1, 10, 100, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9, 1e10, 1e11};
    const double expected[] = {0,
                               1 + 20 + 300,
                               321 + 4e3 + 6e4 + 9e5,
                               964321 + 8e6 + 12e7 + 18e8 + 27e9,
                               964321 + 8e6 + 12e7 + 18e8 + 27e9 + 81e10,
                               964321 + 8e6 + 12e7 + 18e8 + 27e9 + 81e10 + 243e11,
                               0};
    for (int level = 0; level <= 6; ++level) {
        polynomial.level = level;
        EXPECT_DOUBLE_EQ(polynomial.at(2, 3), expected[level]) << "level " << level;
    }
}

TEST(Polynomial, ThroughTwoPointsKeepsTheInterceptOfTheSecond)
{
    const std::vector<ReferencePoint> points{{100, 500, 50, 10}, {300, 100, 52, 14}};
    const auto fitted = fitPolynomials(points, 0);
    EXPECT_DOUBLE_EQ(fitted.wpx.at(12, 51), 200); // 50 pixels a degree
    EXPECT_DOUBLE_EQ(fitted.wpy.at(12, 51), 100 - 200 * 51.0); // not 100 - 200 * (51 - 52)
    EXPECT_DOUBLE_EQ(fitted.pwx.at(200, 300), 12);
    EXPECT_DOUBLE_EQ(fitted.pwy.at(200, 300), 52 - 0.005 * 300);
}

TEST(Polynomial, FitsFourPointsOnAPlaneExactly)
{
    const std::vector<ReferencePoint> points{
        {0, 0, 60.4, 20.0}, {9, 0, 60.4, 20.9}, {9, 3, 60.1, 20.9}, {0, 3, 60.1, 20.0}};
    const auto fitted = fitPolynomials(points, 0);
    EXPECT_EQ(fitted.wpx.level, 1);
    EXPECT_NEAR(fitted.wpx.at(20.55, 60.25), 5.5, 1e-9);
    EXPECT_NEAR(fitted.wpy.at(20.55, 60.25), 1.5, 1e-9);
    EXPECT_NEAR(fitted.pwx.at(5.5, 1.5), 20.55, 1e-12);
    EXPECT_NEAR(fitted.pwy.at(5.5, 1.5), 60.25, 1e-12);
}

/// Pixels of a bent chart: second powers from nine points on.
ReferencePoint bent(double latitude, double longitude, double shifted)
{
    const double east = shifted - 5;
    const double north = latitude - 40;
    return {100 + 200 * east + 3 * east * north, 900 - 250 * north - 4 * north * north, latitude,
            longitude};
}

TEST(Polynomial, FitsNinePointsWithSecondPowersAcrossTheDateLine)
{
    constexpr double phase = 180;
    std::vector<ReferencePoint> points;
    for (const double latitude : {40.0, 41.5, 43.0})
        for (const double longitude : {-176.0, -175.0, -173.5})
            points.push_back(bent(latitude, longitude, longitude + phase));
    const auto fitted = fitPolynomials(points, phase);
    EXPECT_EQ(fitted.wpx.level, 2);
    const auto between = bent(42, 5.5 - 180, 5.5);
    EXPECT_NEAR(fitted.wpx.at(5.5, 42), between.x, 1e-6);
    EXPECT_NEAR(fitted.wpy.at(5.5, 42), between.y, 1e-6);

    EXPECT_DOUBLE_EQ(shiftedLongitude(179, phase), -1) << "wraps from the other side of the line";
}

TEST(Polynomial, LeavesLevelZeroWhereThePointsDoNotSuffice)
{
    const std::vector<ReferencePoint> one{{0, 0, 60, 20}};
    const std::vector<ReferencePoint> twice{{0, 0, 60, 20}, {0, 0, 60, 20}};
    const std::vector<ReferencePoint> line{{0, 0, 60, 20}, {1, 1, 61, 21}, {2, 2, 62, 22}};
    const std::vector<ReferencePoint> nineTimesTheSame(9, {5, 5, 60, 20});
    for (const auto& points : {one, twice, line, nineTimesTheSame})
        EXPECT_FALSE(fitPolynomials(points, 0).allHaveLevel()) << points.size();
}

} // namespace
} // namespace kelvox
