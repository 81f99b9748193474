#include "navigation/NavMath.h"

#include "navigation/MagneticModel.h"

#include <algorithm>
#include <cmath>

namespace kelvox {

namespace {
// Single-precision constants, written out because every result depends on their rounding.
constexpr float radiansPerDegree = 0.017453292F;
constexpr float degreesPerRadian = 57.295776F;
constexpr float pi = 3.1415927F;
constexpr float twoPi = 6.2831855F;
constexpr int variationDegree = 9;

float radians(double degrees)
{
    return static_cast<float>(degrees) * radiansPerDegree;
}

/// A position in single-precision radians.
struct Radians {
    float longitude;
    float latitude;

    explicit Radians(Position p)
        : longitude(radians(p.longitude))
        , latitude(radians(p.latitude))
    {
    }
};

Position degrees(float longitude, float latitude)
{
    return {.longitude = longitude * degreesPerRadian, .latitude = latitude * degreesPerRadian};
}

/// True wind as a vector; x and y are kept this way round on purpose, with atan of x / y.
struct TrueWind {
    float x;
    float y;

    TrueWind(float apparentAngle, float apparentSpeed, float boatSpeed)
    {
        const float angle = radians(90 - apparentAngle);
        x = std::cos(angle) * apparentSpeed - boatSpeed;
        y = std::sin(angle) * apparentSpeed;
    }
};
} // namespace

float NavMath::radianDistance(Position p1, Position p2)
{
    const Radians a(p1);
    const Radians b(p2);
    const float sinLatitude = std::sin((a.latitude - b.latitude) / 2);
    const float sinLongitude = std::sin((a.longitude - b.longitude) / 2);
    const float haversine = sinLatitude * sinLatitude
        + std::cos(a.latitude) * std::cos(b.latitude) * sinLongitude * sinLongitude;
    return 2 * std::asin(std::sqrt(std::min(haversine, 1.0F))); // antipodes may round above 1
}

float NavMath::distanceFromPoint(Position p1, Position p2)
{
    return radianDistance(p1, p2) * milesPerRadian;
}

float NavMath::distanceToPoint(Position p1, Position p2)
{
    const Radians a(p1);
    const Radians b(p2);
    const float northing = b.latitude - a.latitude;
    float q = std::cos(a.latitude);
    if (std::abs(northing) >= 1.0842022e-19F) { // 2^-63
        const float stretched =
            std::log(std::tan(b.latitude / 2 + pi / 4) / std::tan(a.latitude / 2 + pi / 4));
        // Neighbouring latitudes may stretch to the same number; the parallel's q is its limit.
        if (stretched != 0)
            q = northing / stretched;
    }
    const float westward = std::fmod(a.longitude - b.longitude, twoPi);
    const float eastward = std::fmod(b.longitude - a.longitude, twoPi);
    const float easting = eastward < westward ? eastward : westward;
    return std::sqrt(q * q * easting * easting + northing * northing);
}

float NavMath::bearingFromPoint(Position from, Position to)
{
    const Radians a(from);
    const Radians b(to);
    const float alongMeridian = a.latitude <= b.latitude ? 0.0F : 180.0F;
    if (a.longitude == b.longitude)
        return alongMeridian; // exactly, where the arc cosine would be a tenth of a degree off
    const float d = radianDistance(from, to);
    const float angle = std::acos((std::sin(b.latitude) - std::sin(a.latitude) * std::cos(d))
                                  / (std::cos(a.latitude) * std::sin(d)));
    if (std::isnan(angle))
        return alongMeridian;
    const bool eastward = std::sin(b.longitude - a.longitude) >= 0;
    float bearing = (eastward ? angle : twoPi - angle) * degreesPerRadian;
    if (bearing >= 360)
        bearing -= 360;
    if (bearing < 0)
        bearing += 360;
    return bearing >= 359.5F ? 0.0F : bearing; // a course due north never shows as 360
}

float NavMath::bearingDeltaFromPoint(Position a1, Position a2, Position b1, Position b2)
{
    const float delta = std::abs(bearingFromPoint(b1, b2) - bearingFromPoint(a1, a2));
    return delta > 180 ? 360 - delta : delta;
}

float NavMath::vmgFromPoint(Position from, Position to, float course, float speed)
{
    return speed * std::cos(radians(std::abs(bearingFromPoint(from, to) - course)));
}

float NavMath::timeFromPoint(Position from, Position to, float course, float speed)
{
    if (!(speed > 0))
        return 0;
    const float distance = distanceFromPoint(from, to);
    if (!(distance > 0))
        return 0;
    const float vmg = vmgFromPoint(from, to, course, speed);
    return vmg == 0 ? 0 : distance / vmg;
}

float NavMath::crossTrackFromPoint(Position position, Position legEnd, Position legStart)
{
    const float d13 = radianDistance(legStart, position);
    const float bearing13 = radians(bearingFromPoint(legStart, position));
    const float bearing12 = radians(bearingFromPoint(legStart, legEnd));
    return std::asin(std::sin(d13) * std::sin(bearing13 - bearing12)) * milesPerRadian;
}

Position NavMath::intermediatePosition(Position p1, Position p2, float fraction)
{
    const Radians p(p1);
    const Radians q(p2);
    const float d = radianDistance(p1, p2);
    const float sinD = std::sin(d);
    if (!(sinD > 0))
        return p1;
    const float a = std::sin((1 - fraction) * d) / sinD;
    const float b = std::sin(fraction * d) / sinD;
    const float x = a * std::cos(p.latitude) * std::cos(p.longitude)
        + b * std::cos(q.latitude) * std::cos(q.longitude);
    const float y = a * std::cos(p.latitude) * std::sin(p.longitude)
        + b * std::cos(q.latitude) * std::sin(q.longitude);
    const float z = a * std::sin(p.latitude) + b * std::sin(q.latitude);
    return degrees(std::atan2(y, x), std::atan2(z, std::sqrt(x * x + y * y)));
}

Position NavMath::positionAtDistance(Position start, float bearing, float distance)
{
    if (!(distance > 0))
        return start;
    const Radians p(start);
    const float course = radians(360 - bearing); // the formula counts west positive
    const float d = distance * radiansPerMile;
    const float sine =
        std::sin(p.latitude) * std::cos(d) + std::cos(p.latitude) * std::sin(d) * std::cos(course);
    const float latitude = std::asin(std::clamp(sine, -1.0F, 1.0F)); // may round past a pole
    const float westing = std::atan2(std::sin(course) * std::sin(d) * std::cos(p.latitude),
                                     std::cos(d) - std::sin(p.latitude) * std::sin(latitude));
    const float longitude = std::fmod(p.longitude - westing + pi, twoPi) - pi;
    return degrees(longitude, latitude);
}

NavMath::ClosestApproach NavMath::closestPointOfApproach(Position own, Position target,
                                                         float ownSpeed, float targetSpeed,
                                                         float ownCourse, float targetCourse)
{
    const float range = distanceFromPoint(own, target);
    const float bearing = radians(bearingFromPoint(own, target));
    const float ownAngle = radians(ownCourse);
    const float targetAngle = radians(targetCourse);
    const float u = targetSpeed * std::sin(targetAngle) - ownSpeed * std::sin(ownAngle);
    const float w = targetSpeed * std::cos(targetAngle) - ownSpeed * std::cos(ownAngle);
    const float k = range * std::sin(bearing) * u + range * std::cos(bearing) * w;
    if (!(k < 0))
        return {};

    const float speed2 = u * u + w * w;
    ClosestApproach result{.time = std::abs(-2 * k / (2 * speed2))};
    const float distance2 = range * range - 4 * k * k / (4 * speed2);
    if (!(distance2 > 0))
        return result;
    result.distance = std::sqrt(distance2);
    result.bearing =
        bearingFromPoint(positionAtDistance(own, ownCourse, ownSpeed * result.time),
                         positionAtDistance(target, targetCourse, targetSpeed * result.time));
    return result;
}

float NavMath::trueWindSpeed(float apparentAngle, float apparentSpeed, float boatSpeed)
{
    if (!(boatSpeed > 0))
        return apparentSpeed;
    const TrueWind wind(apparentAngle, apparentSpeed, boatSpeed);
    return std::sqrt(wind.x * wind.x + wind.y * wind.y);
}

float NavMath::trueWindAngle(float apparentAngle, float apparentSpeed, float boatSpeed)
{
    if (!(boatSpeed > 0))
        return apparentAngle;
    const TrueWind wind(apparentAngle, apparentSpeed, boatSpeed);
    return fixBearing(90 - std::atan(wind.x / wind.y) * degreesPerRadian);
}

float NavMath::variationForPoint(Position p)
{
    return variationForPoint(p, SystemClock());
}

float NavMath::variationForPoint(Position p, const Clock& clock)
{
    const std::time_t now = std::chrono::system_clock::to_time_t(clock.now());
    std::tm local{};
    if (!::localtime_r(&now, &local))
        return 0;
    return variationForPoint(p, local);
}

float NavMath::variationForPoint(Position p, const std::tm& localDate)
{
    const int year = localDate.tm_year < 50 ? 2000 + localDate.tm_year : 1900 + localDate.tm_year;
    // tm_mon counts from 0, so the day lies a month early: kept on purpose.
    return variationForDay(p, julianDayNumber(year, localDate.tm_mon, localDate.tm_mday));
}

float NavMath::variationForDay(Position p, int julianDay)
{
    const Radians point(p);
    const auto field =
        magneticField(decimalYear(julianDay), point.latitude, point.longitude, 0, variationDegree);
    return static_cast<float>(field.declination()) * degreesPerRadian;
}

float NavMath::magneticBearing(float trueBearing, float variation)
{
    return fixBearing(trueBearing - variation);
}

float NavMath::trueBearing(float magneticBearing, float variation)
{
    return fixBearing(magneticBearing + variation);
}

float NavMath::fixBearing(float angle)
{
    if (!std::isfinite(angle))
        return 0;
    if (std::abs(angle) > 36000)
        angle = std::fmod(angle, 360.0F); // beyond this, single steps may never end
    while (angle < 0)
        angle += 360;
    while (angle >= 360)
        angle -= 360;
    return angle;
}

double NavMath::fixPosition(double longitude)
{
    if (longitude < -180)
        return longitude + 360;
    return longitude > 180 ? longitude - 360 : longitude;
}

bool NavMath::withInPlusOrMinus(float value, float centre, float tolerance)
{
    return centre - tolerance <= value && value <= centre + tolerance;
}

} // namespace kelvox
