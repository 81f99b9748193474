#pragma once

#include "base/Alarms.h"
#include "base/Position.h"
#include "base/Settings.h"
#include "base/Strings.h"
#include "navigation/WaypointsModel.h"

#include <functional>
#include <string>
#include <string_view>

namespace kelvox {

/// Steering to a waypoint: the active waypoint and its leg, the arrival and cross-track alarms, the
/// values panels show. Main thread. Whoever has fixes calls plotPosition() with each.
///
/// Reads the settings `waypointApproachDistance` and `crossTrackDistance` (NM), `audio` and
/// `visual` when needed. Values are `noValue` while there is no position or no active waypoint.
/// All references must outlive the controller.
class WaypointController {
public:
    static constexpr double defaultApproachDistance = 0.1; ///< NM, for settings never made
    static constexpr double defaultCrossTrackDistance = 0.2;

    WaypointController(WaypointsModel& waypoints, Alarms& alarms, const Settings& settings,
                       const Strings& strings);

    // What the program around it supplies.
    void setChartVisible(std::function<bool()> isVisible); ///< alarms wait while it is not
    void setChangeHandler(std::function<void()> handler); ///< redraws what depends on the goto
    void setCourseAndSpeed(float cog, float sog); ///< degrees true, knots
    /// A new vessel position; an unknown one cancels the active waypoint.
    void plotPosition(Position position);
    void applicationWillSleep() { m_sleeping = true; } ///< positions are ignored until it wakes
    void applicationWillWake() { m_sleeping = false; }
    [[nodiscard]] bool sleeping() const { return m_sleeping; }
    [[nodiscard]] Position positionOnGPS() const { return m_position; }

    // The active waypoint.
    /// The user's Goto. A waypoint that a connected GPS steers to is left alone: false.
    bool onWaypointGoto(const WaypointPointer& waypoint);
    /// A connected GPS has made this waypoint active.
    void gotoWaypointFromGPS(const WaypointPointer& waypoint, Position legStart);
    /// @param legStart unknown: the current vessel position
    /// @return true also when a waypoint is active already, which then stays
    bool gotoRouteWaypoint(const WaypointPointer& waypoint, Position legStart);
    void cancelWaypoint();
    [[nodiscard]] const WaypointPointer& gotoWaypoint() const { return m_gotoWaypoint; }
    [[nodiscard]] bool isGotoWaypointFromGPS() const { return m_gotoWaypointFromGPS; }
    [[nodiscard]] Position startPositionOnGPS() const { return m_startPosition; }
    [[nodiscard]] bool hasActiveWaypoint() const { return m_gotoWaypoint != nullptr; }
    [[nodiscard]] std::string activeWaypointName() const;
    [[nodiscard]] float activeWaypointDistance() const; ///< NM
    [[nodiscard]] float activeWaypointBearing() const; ///< degrees true
    [[nodiscard]] float activeWaypointVelocity() const; ///< made good, knots
    [[nodiscard]] float activeWaypointCrossTrack() const; ///< NM, positive to starboard of the leg
    [[nodiscard]] float activeWaypointTimeToGo() const; ///< hours; 0 without course or speed
    enum class Steer { Left, Right };
    [[nodiscard]] Steer steer() const; ///< back to the leg

    // The alarms. Each sounds once; switching it on again arms it again.
    [[nodiscard]] bool waypointArrival() const; ///< by distance, or past the line square to the leg
    [[nodiscard]] bool crossTrack() const; ///< at or beyond the limit
    void checkWaypointArrivalAlarm();
    void checkCrossTrackAlarm();
    /// Switching on is refused while there is no vessel position.
    void setWaypointArrivalAlarm(bool on);
    void setCrossTrackAlarm(bool on);
    [[nodiscard]] bool isWaypointArrivalAlarmOn() const { return m_arrivalAlarm; }
    [[nodiscard]] bool isCrossTrackAlarmOn() const { return m_crossTrackAlarm; }
    void showWaypointArrivalAlarm();
    void showCrossTrackAlarm();

    // All waypoints, seen from the vessel.
    void fromWaypoints(float cog, float sog); ///< refreshes distance, bearing and time to go
    [[nodiscard]] std::string closestWaypointName(); ///< refreshes them; empty without any
    [[nodiscard]] float closestWaypointDistance() const; ///< of the one that was named last
    [[nodiscard]] float closestWaypointBearing() const;

    WaypointPointer createWaypoint(std::string_view name, std::string_view description, int icon,
                                   WaypointsModel::GroupCode group, double longitude,
                                   double latitude);
    WaypointPointer createWaypointFromGPS(std::string_view name, double longitude, double latitude,
                                          std::string_view description);

private:
    [[nodiscard]] bool canMeasure() const;
    void activate(const WaypointPointer& waypoint, Position legStart, bool fromGPS);
    void raise(const char* key, const std::string& informativeText);
    void changed() const;

    WaypointsModel& m_waypoints;
    Alarms& m_alarms;
    const Settings& m_settings;
    const Strings& m_strings;
    std::function<bool()> m_isChartVisible;
    std::function<void()> m_changeHandler;
    Position m_position;
    Position m_startPosition;
    WaypointPointer m_gotoWaypoint;
    WaypointPointer m_closest;
    bool m_gotoWaypointFromGPS = false;
    bool m_arrivalAlarm = false;
    bool m_crossTrackAlarm = false;
    bool m_sleeping = false;
    float m_cog = noValue;
    float m_sog = noValue;
};

} // namespace kelvox
