#include "navigation/WaypointController.h"

#include "navigation/NavMath.h"

#include <cmath>
#include <utility>

namespace kelvox {

namespace {
constexpr auto unknown = static_cast<float>(noValue);
constexpr float squareToTheLeg = 90; // degrees
} // namespace

WaypointController::WaypointController(WaypointsModel& waypoints, Alarms& alarms,
                                       const Settings& settings, const Strings& strings)
    : m_waypoints(waypoints)
    , m_alarms(alarms)
    , m_settings(settings)
    , m_strings(strings)
{
}

void WaypointController::setChartVisible(std::function<bool()> isVisible)
{
    m_isChartVisible = std::move(isVisible);
}

void WaypointController::setChangeHandler(std::function<void()> handler)
{
    m_changeHandler = std::move(handler);
}

void WaypointController::setCourseAndSpeed(float cog, float sog)
{
    m_cog = cog;
    m_sog = sog;
}

void WaypointController::plotPosition(Position position)
{
    if (m_sleeping || position == m_position)
        return;
    m_position = position;
    const bool isGone = m_gotoWaypoint && m_waypoints.named(m_gotoWaypoint->name) != m_gotoWaypoint;
    if (!position.isKnown() || isGone)
        cancelWaypoint();
    changed();
    checkWaypointArrivalAlarm();
    checkCrossTrackAlarm();
}

bool WaypointController::onWaypointGoto(const WaypointPointer& waypoint)
{
    if (!waypoint || (hasActiveWaypoint() && m_gotoWaypointFromGPS))
        return false;
    cancelWaypoint();
    activate(waypoint, m_position, false);
    return true;
}

void WaypointController::gotoWaypointFromGPS(const WaypointPointer& waypoint, Position legStart)
{
    activate(waypoint, legStart.isKnown() ? legStart : m_position, true);
}

bool WaypointController::gotoRouteWaypoint(const WaypointPointer& waypoint, Position legStart)
{
    if (hasActiveWaypoint())
        return true;
    if (!waypoint)
        return false;
    activate(waypoint, legStart.isKnown() ? legStart : m_position, false);
    return true;
}

void WaypointController::activate(const WaypointPointer& waypoint, Position legStart, bool fromGPS)
{
    m_gotoWaypoint = waypoint;
    m_gotoWaypointFromGPS = fromGPS;
    m_startPosition = legStart;
    setWaypointArrivalAlarm(true);
    changed();
}

void WaypointController::cancelWaypoint()
{
    if (!hasActiveWaypoint())
        return;
    m_gotoWaypoint.reset();
    m_gotoWaypointFromGPS = false;
    m_startPosition = {};
    changed();
}

bool WaypointController::canMeasure() const
{
    return hasActiveWaypoint() && m_position.isKnown() && m_gotoWaypoint->hasPosition();
}

std::string WaypointController::activeWaypointName() const
{
    return hasActiveWaypoint() ? m_gotoWaypoint->name : std::string();
}

float WaypointController::activeWaypointDistance() const
{
    return canMeasure() ? NavMath::distanceFromPoint(m_position, m_gotoWaypoint->positionOnGPS())
                        : unknown;
}

float WaypointController::activeWaypointBearing() const
{
    return canMeasure() ? NavMath::bearingFromPoint(m_position, m_gotoWaypoint->positionOnGPS())
                        : unknown;
}

float WaypointController::activeWaypointVelocity() const
{
    if (!canMeasure() || m_cog == unknown || m_sog == unknown)
        return unknown;
    return NavMath::vmgFromPoint(m_position, m_gotoWaypoint->positionOnGPS(), m_cog, m_sog);
}

float WaypointController::activeWaypointCrossTrack() const
{
    if (!canMeasure() || !m_startPosition.isKnown())
        return unknown;
    return NavMath::crossTrackFromPoint(m_position, m_gotoWaypoint->positionOnGPS(),
                                        m_startPosition);
}

float WaypointController::activeWaypointTimeToGo() const
{
    if (!canMeasure())
        return unknown;
    if (m_cog == unknown || m_sog == unknown)
        return 0;
    return NavMath::timeFromPoint(m_position, m_gotoWaypoint->positionOnGPS(), m_cog, m_sog);
}

WaypointController::Steer WaypointController::steer() const
{
    const float error = activeWaypointCrossTrack();
    return error != unknown && error > 0 ? Steer::Left : Steer::Right;
}

bool WaypointController::waypointArrival() const
{
    if (!canMeasure())
        return false;
    const auto limit =
        static_cast<float>(m_settings.number("waypointApproachDistance", defaultApproachDistance));
    if (activeWaypointDistance() <= limit)
        return true;
    const Position waypoint = m_gotoWaypoint->positionOnGPS();
    return m_startPosition.isKnown()
        && NavMath::bearingDeltaFromPoint(m_startPosition, waypoint, m_position, waypoint)
        >= squareToTheLeg;
}

bool WaypointController::crossTrack() const
{
    const float error = activeWaypointCrossTrack();
    const auto limit =
        static_cast<float>(m_settings.number("crossTrackDistance", defaultCrossTrackDistance));
    return error != unknown && std::abs(error) >= limit;
}

void WaypointController::checkWaypointArrivalAlarm()
{
    if (!m_arrivalAlarm || (m_isChartVisible && !m_isChartVisible()))
        return;
    if (!m_position.isKnown())
        setWaypointArrivalAlarm(false);
    else if (waypointArrival())
        showWaypointArrivalAlarm();
}

void WaypointController::checkCrossTrackAlarm()
{
    if (!m_crossTrackAlarm || (m_isChartVisible && !m_isChartVisible()))
        return;
    if (!m_position.isKnown())
        setCrossTrackAlarm(false);
    else if (crossTrack())
        showCrossTrackAlarm();
}

void WaypointController::setWaypointArrivalAlarm(bool on)
{
    if (on && !m_position.isKnown())
        return;
    m_arrivalAlarm = on;
    changed();
}

void WaypointController::setCrossTrackAlarm(bool on)
{
    if (on && !m_position.isKnown())
        return;
    m_crossTrackAlarm = on;
}

void WaypointController::showWaypointArrivalAlarm()
{
    setWaypointArrivalAlarm(false); // first, so that it sounds once
    raise("NSWaypointArrivalAlarm", activeWaypointName());
}

void WaypointController::showCrossTrackAlarm()
{
    setCrossTrackAlarm(false);
    raise("NSCrossTrackAlarm", {});
}

void WaypointController::raise(const char* key, const std::string& informativeText)
{
    const std::string message = m_strings.text(key);
    if (m_settings.boolean("audio")) {
        m_alarms.beep();
        m_alarms.speak(message);
    }
    if (m_settings.boolean("visual"))
        m_alarms.show({.key = key,
                       .message = message,
                       .informativeText = informativeText,
                       .button = m_strings.text("NSOK")});
}

void WaypointController::fromWaypoints(float cog, float sog)
{
    for (const auto& waypoint : m_waypoints.objectEnumerator()) {
        const bool known = m_position.isKnown() && waypoint->hasPosition();
        const Position there = waypoint->positionOnGPS();
        waypoint->distanceFromPosition =
            known ? NavMath::distanceFromPoint(m_position, there) : unknown;
        waypoint->bearingFromPosition =
            known ? NavMath::bearingFromPoint(m_position, there) : unknown;
        waypoint->timeToGoFromPosition =
            known && cog != unknown ? NavMath::timeFromPoint(m_position, there, cog, sog) : 0;
    }
}

std::string WaypointController::closestWaypointName()
{
    fromWaypoints(unknown, unknown);
    const auto sorted = m_waypoints.sortedByDistanceFromPosition();
    const bool none = sorted.empty() || sorted.front()->distanceFromPosition == unknown;
    m_closest = none ? nullptr : sorted.front();
    return m_closest ? m_closest->name : std::string();
}

float WaypointController::closestWaypointDistance() const
{
    return m_closest ? m_closest->distanceFromPosition : unknown;
}

float WaypointController::closestWaypointBearing() const
{
    return m_closest ? m_closest->bearingFromPosition : unknown;
}

WaypointPointer WaypointController::createWaypoint(std::string_view name,
                                                   std::string_view description, int icon,
                                                   WaypointsModel::GroupCode group,
                                                   double longitude, double latitude)
{
    return m_waypoints.createWaypoint(name, description, icon, group, {longitude, latitude});
}

WaypointPointer WaypointController::createWaypointFromGPS(std::string_view name, double longitude,
                                                          double latitude,
                                                          std::string_view description)
{
    return m_waypoints.createWaypointFromGPS(name, {longitude, latitude}, description);
}

void WaypointController::changed() const
{
    if (m_changeHandler)
        m_changeHandler();
}

} // namespace kelvox
