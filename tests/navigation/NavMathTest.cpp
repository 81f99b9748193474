#include "navigation/NavMath.h"
#include "navigation/MagneticModel.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace kelvox {
namespace {

constexpr double degree = M_PI / 180;

/// The same geometry by vectors in double precision, to hold the single-precision forms against.
struct Vector {
    double x, y, z;

    explicit Vector(Position p)
        : x(std::cos(p.latitude * degree) * std::cos(p.longitude * degree))
        , y(std::cos(p.latitude * degree) * std::sin(p.longitude * degree))
        , z(std::sin(p.latitude * degree))
    {
    }
};

double exactMiles(Position p, Position q)
{
    const Vector a(p);
    const Vector b(q);
    const double cross =
        std::hypot(a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x);
    return std::atan2(cross, a.x * b.x + a.y * b.y + a.z * b.z) / degree * 60;
}

double exactBearing(Position p, Position q)
{
    const double dLon = (q.longitude - p.longitude) * degree;
    const double y = std::sin(dLon) * std::cos(q.latitude * degree);
    const double x = std::cos(p.latitude * degree) * std::sin(q.latitude * degree)
        - std::sin(p.latitude * degree) * std::cos(q.latitude * degree) * std::cos(dLon);
    return std::fmod(std::atan2(y, x) / degree + 360, 360);
}

double turn(double a, double b)
{
    return std::abs(std::remainder(a - b, 360));
}

TEST(NavMath, AgreesWithVectorsAllOverTheGlobe)
{
    std::mt19937 random(20260101);
    std::uniform_real_distribution<> longitude(-180, 180);
    std::uniform_real_distribution<> sine(-0.996, 0.996); // within 85 degrees
    for (int i = 0; i < 20'000; ++i) {
        const Position p{longitude(random), std::asin(sine(random)) / degree};
        const Position q{longitude(random), std::asin(sine(random)) / degree};
        const double miles = exactMiles(p, q);
        if (miles < 60 || miles > 10'000)
            continue;
        SCOPED_TRACE(testing::Message() << p.longitude << "," << p.latitude << " to " << q.longitude
                                        << "," << q.latitude);
        ASSERT_NEAR(NavMath::distanceFromPoint(p, q), miles, 0.02);
        const double bearing = exactBearing(p, q);
        ASSERT_LT(turn(NavMath::bearingFromPoint(p, q), bearing), bearing > 359 ? 0.6 : 0.35);

        const auto there =
            NavMath::positionAtDistance(p, static_cast<float>(bearing), static_cast<float>(miles));
        ASSERT_LT(exactMiles(there, q), 0.05);
        const auto middle = NavMath::intermediatePosition(p, q, 0.3F);
        ASSERT_NEAR(exactMiles(p, middle), miles * 0.3, 0.02);
        ASSERT_NEAR(exactMiles(middle, q), miles * 0.7, 0.02);
    }
}

TEST(NavMath, ResolvesTheThresholdsOfAlarmsOnShortRanges)
{
    std::mt19937 random(7);
    std::uniform_real_distribution<> longitude(-180, 180);
    std::uniform_real_distribution<> latitude(-80, 80);
    std::uniform_real_distribution<> small(-0.004, 0.004);
    for (int i = 0; i < 5000; ++i) {
        const Position p{longitude(random), latitude(random)};
        const Position q{p.longitude + small(random), p.latitude + small(random)};
        ASSERT_NEAR(NavMath::distanceFromPoint(p, q), exactMiles(p, q), 0.002)
            << p.longitude << "," << p.latitude;
    }
}

TEST(NavMath, GivesTheNamedFallBacks)
{
    const Position a{10, 50};
    EXPECT_EQ(NavMath::bearingFromPoint(a, a), 0);
    EXPECT_EQ(NavMath::bearingFromPoint({10, 51}, {10, 50}), 180);
    EXPECT_EQ(NavMath::bearingFromPoint({10, 50}, {10, 51}), 0);
    // A little west of north would be 359.7 degrees.
    EXPECT_NEAR(exactBearing({0, 0}, {-0.052, 10}), 359.7, 0.05);
    EXPECT_EQ(NavMath::bearingFromPoint({0, 0}, {-0.052, 10}), 0);
    EXPECT_EQ(NavMath::timeFromPoint(a, {11, 50}, 90, 0), 0);
    EXPECT_EQ(NavMath::timeFromPoint(a, a, 90, 5), 0);
    EXPECT_LT(NavMath::timeFromPoint(a, {11, 50}, 270, 5), 0);
    EXPECT_EQ(NavMath::positionAtDistance(a, 45, 0), a);
    EXPECT_EQ(NavMath::positionAtDistance(a, 45, -1), a);
    EXPECT_EQ(NavMath::intermediatePosition(a, a, 0.5F), a);
    const auto apart = NavMath::closestPointOfApproach(a, {10, 51}, 5, 10, 180, 0);
    EXPECT_EQ(apart.time + apart.distance + apart.bearing, 0);
    EXPECT_EQ(NavMath::fixBearing(-0.00000001F), 0);
    EXPECT_EQ(NavMath::fixBearing(1e30F) >= 0 && NavMath::fixBearing(1e30F) < 360, true);
    EXPECT_EQ(NavMath::fixPosition(-190), 170);
    EXPECT_EQ(NavMath::fixPosition(540), 180);
}

TEST(NavMath, CrossTrackIsPositiveToStarboardOnEveryCourse)
{
    for (const double course : {30.0, 80.0, 135.0, 200.0, 275.0, 330.0}) {
        const Position start{20, 40};
        const auto end = NavMath::positionAtDistance(start, static_cast<float>(course), 30);
        const auto half = NavMath::positionAtDistance(start, static_cast<float>(course), 15);
        const auto right = NavMath::positionAtDistance(
            half, NavMath::fixBearing(static_cast<float>(course) + 90), 2);
        const auto left = NavMath::positionAtDistance(
            half, NavMath::fixBearing(static_cast<float>(course) - 90), 2);
        EXPECT_NEAR(NavMath::crossTrackFromPoint(right, end, start), 2, 0.06) << course;
        EXPECT_NEAR(NavMath::crossTrackFromPoint(left, end, start), -2, 0.06) << course;
        EXPECT_NEAR(NavMath::vmgFromPoint(half, end, static_cast<float>(course) + 60, 8), 4, 0.2);
        EXPECT_NEAR(NavMath::bearingDeltaFromPoint(start, end, end, start), 180, 0.5);
    }
    EXPECT_NEAR(NavMath::bearingDeltaFromPoint({0, 0}, {1, 5}, {0, 0}, {-1, 5}), 22.6, 0.3);
}

TEST(NavMath, RhumbLineKeepsItsCourse)
{
    // 60 N from 0 to 10 E along the parallel: 10 degrees of half length. Eastwards the smaller
    // remainder is the negative one, and its square counts.
    EXPECT_NEAR(NavMath::distanceToPoint({0, 60}, {10, 60}), 5 * degree, 1e-5);
    EXPECT_NEAR(NavMath::distanceToPoint({0, 10}, {0, 40}), 30 * degree, 1e-5);
    // At a constant 45 degrees the way is the latitude difference times the square root of two.
    const double eastward = std::log(std::tan((45 + 20) * degree)) / degree;
    EXPECT_NEAR(NavMath::distanceToPoint({0, 0}, {eastward, 40}), 40 * degree * M_SQRT2, 1e-4);
}

TEST(NavMath, MeetsTheOtherShipWhereAPlotSaysSo)
{
    // Target 10 NM north steering east at 10 knots; own ship steering north at 10 knots: relative
    // way is south-east, so 7.07 NM off after half an hour, bearing 045.
    const auto cpa = NavMath::closestPointOfApproach({0, 0}, {0, 10.0 / 60}, 10, 10, 0, 90);
    EXPECT_NEAR(cpa.time, 0.5, 0.002);
    EXPECT_NEAR(cpa.distance, 7.07, 0.01);
    EXPECT_NEAR(cpa.bearing, 45, 0.5);
    const auto collision = NavMath::closestPointOfApproach({0, 0}, {0, 10.0 / 60}, 10, 10, 0, 180);
    EXPECT_NEAR(collision.time, 0.5, 0.002);
    EXPECT_NEAR(collision.distance, 0, 0.02);
}

TEST(NavMath, TrueWindFollowsItsOwnFrame)
{
    EXPECT_EQ(NavMath::trueWindSpeed(40, 12, 0), 12);
    EXPECT_EQ(NavMath::trueWindAngle(40, 12, 0), 40);
    // By hand for 60 degrees, 20 knots, boat 5: x = 20 cos 30 - 5 = 12.32, y = 20 sin 30 = 10.
    EXPECT_NEAR(NavMath::trueWindSpeed(60, 20, 5), 15.868, 0.001);
    EXPECT_NEAR(NavMath::trueWindAngle(60, 20, 5), 39.06, 0.01);
    // atan, not atan2: from astern the angle falls into the other half. x = 12.32, y = -10.
    EXPECT_NEAR(NavMath::trueWindAngle(120, 20, 5), 140.94, 0.01);
}

/// Rows of the test tables in the model's technical reports: published declination and field at
/// degree 12. `cut` is the declination at degree 9, computed from the same coefficients elsewhere.
struct MagneticRow {
    double date, height, latitude, longitude, declination, north, east, down, cut;
};

TEST(MagneticModel, AgreesWithThePublishedTestValues)
{
    const MagneticRow rows[] = {
        {2025, 0, 80, 0, 1.28, 6521.6, 145.9, 54791.5, 1.641},
        {2025, 0, 0, 120, -0.16, 39677.8, -109.6, -10580.2, -0.053},
        {2025, 0, -80, 240, 68.78, 6117.5, 15751.9, -52022.5, 68.680},
        {2027.5, 100, 80, 0, 2.16, 6196.7, 233.8, 52670.5, 2.473},
        {2027.5, 100, 0, 120, -0.23, 37711.5, -148.7, -9969.8, -0.138},
        {2027.5, 0, -80, 240, 68.49, 6200.7, 15730.3, -51783.7, 68.404},
        {2020, 0, 80, 0, -1.28, 6570.4, -146.3, 54606, -0.926},
        {2022.5, 0, 0, 120, -0.06, 39684.7, -42.2, -10809.5, 0.049},
        {2022.5, 100, -80, 240, 68.55, 5815, 14803, -49755.3, 68.462},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.date << " " << row.latitude);
        const auto at = [&](int cut) {
            return magneticField(row.date, row.latitude * degree, row.longitude * degree,
                                 row.height, cut);
        };
        const auto field = at(12);
        EXPECT_NEAR(field.declination() / degree, row.declination, 0.0051);
        EXPECT_NEAR(field.north, row.north, 0.06);
        EXPECT_NEAR(field.east, row.east, 0.06);
        EXPECT_NEAR(field.down, row.down, 0.06);
        EXPECT_NEAR(at(9).declination() / degree, row.cut, 0.001);
    }
}

TEST(NavMath, TakesTheVariationOfAMonthAgo)
{
    EXPECT_EQ(julianDayNumber(2000, 1, 1), 2451545);
    EXPECT_EQ(julianDayNumber(2025, 0, 1), 2460646); // 1 December 2024
    std::tm date{};
    date.tm_year = 126;
    date.tm_mday = 1; // 1 January 2026
    EXPECT_NEAR(NavMath::variationForPoint({-1, 50}, date), 0.714, 0.001);
    EXPECT_NEAR(NavMath::variationForPoint({151.2, -33.9}, date), 12.871, 0.001);
    EXPECT_NEAR(NavMath::variationForDay({-74, 40.7}, julianDayNumber(2026, 1, 1)), -12.470, 0.001);
    date.tm_year = 26; // a two-digit year means the same
    EXPECT_NEAR(NavMath::variationForPoint({-1, 50}, date), 0.714, 0.001);
    EXPECT_EQ(NavMath::magneticBearing(5, 12), 353);
    EXPECT_EQ(NavMath::trueBearing(353, 12), 5);
}

} // namespace
} // namespace kelvox
