#pragma once

#include "base/Clock.h"
#include "base/Position.h"

#include <ctime>

namespace kelvox {

/// Navigation on the sphere.
///
/// All arithmetic is single precision on purpose: other parts compare its results with thresholds.
/// That resolves 0.0003 NM of distance; a bearing over 1 NM is good to about 1 degree near north
/// and south and to 0.02 degrees near east and west. Distances are nautical miles unless radians
/// are named, bearings degrees true from 0 to below 360, speeds knots, times hours. No operation
/// fails: degenerate geometry gives the fall-back that is named with it. Positions are not tested
/// for the no-position marker; callers do that.
class NavMath {
public:
    /// The minutes of arc in a radian, and back, with this rounding.
    static constexpr float milesPerRadian = 3437.7466F;
    static constexpr float radiansPerMile = 0.00029088822F;

    static float radianDistance(Position p1, Position p2); ///< great-circle angle (haversine)
    static float distanceFromPoint(Position p1, Position p2); ///< great circle, NM
    static float distanceToPoint(Position p1, Position p2); ///< rhumb line, radians

    /// Initial great-circle bearing. 359.5 and more is returned as 0; coincident points give 0.
    static float bearingFromPoint(Position from, Position to);
    /// Difference of the bearings a1 to a2 and b1 to b2, 0 to 180.
    static float bearingDeltaFromPoint(Position a1, Position a2, Position b1, Position b2);
    static float vmgFromPoint(Position from, Position to, float course, float speed);
    /// Hours at the velocity made good, negative when moving away; 0 without speed or distance.
    static float timeFromPoint(Position from, Position to, float course, float speed);
    /// Positive when the position lies to starboard of the leg.
    static float crossTrackFromPoint(Position position, Position legEnd, Position legStart);
    /// The point at that fraction of the great circle; p1 where the two coincide.
    static Position intermediatePosition(Position p1, Position p2, float fraction);
    /// A distance of 0 or less gives the start unchanged. A course across the date line westwards
    /// gives a longitude below -180: see fixPosition().
    static Position positionAtDistance(Position start, float bearing, float distance);

    struct ClosestApproach {
        float time = 0; ///< hours from now
        float distance = 0; ///< NM
        float bearing = 0; ///< from own ship to the target at that time
    };
    /// All zero when the two are not closing; distance and bearing zero on a collision course.
    static ClosestApproach closestPointOfApproach(Position own, Position target, float ownSpeed,
                                                  float targetSpeed, float ownCourse,
                                                  float targetCourse);

    /// Angles relative to the bow, degrees. Without boat speed the apparent wind is the true wind.
    /// The boat's speed is taken from the part abeam and the angle counted from there, on purpose;
    /// for display the program shows what the instruments send.
    static float trueWindSpeed(float apparentAngle, float apparentSpeed, float boatSpeed);
    static float trueWindAngle(float apparentAngle, float apparentSpeed, float boatSpeed);

    /// Magnetic variation in degrees, east positive, for today's local date; the date is taken one
    /// month early on purpose. Accuracy: see MagneticModel.h.
    static float variationForPoint(Position p);
    static float variationForPoint(Position p, const Clock& clock);
    static float variationForPoint(Position p, const std::tm& localDate);
    static float variationForDay(Position p, int julianDay); ///< the day as it is
    static float magneticBearing(float trueBearing, float variation);
    static float trueBearing(float magneticBearing, float variation);

    static float fixBearing(float angle); ///< into [0, 360)
    static double fixPosition(double longitude); ///< one turn of 360 into [-180, 180]
    static bool withInPlusOrMinus(float value, float centre, float tolerance);
};

} // namespace kelvox
