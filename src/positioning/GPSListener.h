#pragma once

#include "base/NoValue.h"
#include "base/Position.h"

#include <chrono>
#include <string>
#include <vector>

namespace kelvox {

/// One point for the recorded track: the fix and the instruments' last values, -1000 unknown.
struct TrackSample {
    Position position;
    std::chrono::system_clock::time_point date;
    float courseDegrees = static_cast<float>(noValue);
    float speedKnots = static_cast<float>(noValue);
    float headingDegrees = static_cast<float>(noValue);
    float throughWaterKnots = static_cast<float>(noValue);
    float depthFeet = static_cast<float>(noValue);
    float temperatureF = static_cast<float>(noValue);
    float windAngleDegrees = static_cast<float>(noValue);
    float windSpeedKnots = static_cast<float>(noValue);
};

/// The waypoint that a receiver or plotter on the line steers to; unknown numbers are -1000.
struct ReceiverWaypoint {
    std::string name;
    Position position;
    float bearingDegrees = static_cast<float>(noValue); ///< true
    float rangeNM = static_cast<float>(noValue);
    float velocityKnots = static_cast<float>(noValue); ///< closing
};

/// Who wants to know what the receiver says. Every call comes on the main thread; what a listener
/// does not care for does nothing.
class GPSListener {
public:
    virtual ~GPSListener() = default;
    virtual void drawDataReady() { } ///< before every handled sentence
    virtual void plotPosition(Position) { } ///< each accepted one; unknown when it was lost
    virtual void recordTrack(const TrackSample&) { } ///< with each accepted position
    virtual void plotCourse(float /*degreesTrue*/) { }
    virtual void plotSpeed(float /*knots*/) { }
    virtual void setVariation(float /*degrees*/) { }
    virtual void setXte(float /*nauticalMiles*/, char /*steer, L or R*/) { }
    virtual void setWaypoint(const ReceiverWaypoint&) { }
    virtual void waypointTimedOut() { } ///< no waypoint sentence for a minute
    virtual void waypointReceived(Position, const std::string& /*name*/) { } ///< WPL
    virtual void createRouteFromGPS(const std::string& /*identifier*/,
                                    const std::vector<std::string>& /*names*/)
    {
    }
    virtual void setActiveRouteWaypointsFromGPS(const std::string& /*destination*/,
                                                const std::string& /*origin*/)
    {
    }
    virtual void satellitesChanged() { }
    virtual void setAnchorPosition(Position) { } ///< unknown when the alarm is off
    virtual void stopOpeningNavigationPanel() { }
};

} // namespace kelvox
