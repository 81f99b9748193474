#include "app/nav/NavLinks.h"

#include "app/Program.h"

namespace kelvox {

NavLinks::NavLinks(Program& program)
    : QObject(&program)
    , m_program(program)
{
    program.live().gps().addListener(*this);
    connect(&program, &Program::settingChanged, this, &NavLinks::takeSettings);
    connect(&program, &Program::steeringChanged, this, &NavLinks::steerSimulator);
    connect(&program, &Program::routesChanged, this, &NavLinks::dropGoneRoute);
    for (const char* key : {"startTrackInterval", "magnetic"})
        takeSettings(QLatin1String(key));
}

void NavLinks::takeSettings(const QString& key)
{
    const Settings& settings = m_program.settings();
    if (key == QLatin1String("startTrackInterval"))
        m_program.tracks().setStartTrackInterval(
            static_cast<int>(settings.integer("startTrackInterval", 900)));
    else if (key == QLatin1String("magnetic"))
        setVariation(m_program.live().compass().variation);
    else if (key == QLatin1String("simulatorSteersToWaypoint"))
        steerSimulator();
}

void NavLinks::setVariation(float degrees)
{
    const bool magnetic = m_program.settings().boolean("magnetic");
    m_program.routes().setCompassVariation(magnetic ? degrees : 0);
    m_program.tracks().setCompassVariation(degrees);
    m_program.tracks().setMagnetic(magnetic);
}

WaypointPointer NavLinks::waypointOf(const std::string& name, Position position)
{
    WaypointsModel& waypoints = m_program.waypoints();
    const bool isThere = m_lastWaypoint && waypoints.named(m_lastWaypoint->name) == m_lastWaypoint;
    if (isThere && name == m_lastName && position == m_lastPosition)
        return m_lastWaypoint;
    m_lastName = name;
    m_lastPosition = position;
    m_lastWaypoint = m_program.waypointController().createWaypointFromGPS(name, position.longitude,
                                                                          position.latitude, {});
    return m_lastWaypoint;
}

void NavLinks::setWaypoint(const ReceiverWaypoint& received)
{
    WaypointController& steering = m_program.waypointController();
    if (received.name.empty() || !received.position.isKnown()
        || (steering.hasActiveWaypoint() && !steering.isGotoWaypointFromGPS()))
        return;
    const auto waypoint = waypointOf(received.name, received.position);
    // Only a new one: making the same active again would arm its arrival alarm again.
    if (waypoint && steering.gotoWaypoint() != waypoint)
        steering.gotoWaypointFromGPS(waypoint, m_legStart);
}

void NavLinks::waypointTimedOut()
{
    if (m_program.waypointController().isGotoWaypointFromGPS())
        m_program.waypointController().cancelWaypoint();
    m_legStart = {};
}

void NavLinks::waypointReceived(Position position, const std::string& name)
{
    if (!name.empty() && position.isKnown() && !m_program.waypoints().waypointFromName(name))
        m_program.waypointController().createWaypointFromGPS(name, position.longitude,
                                                             position.latitude, {});
}

void NavLinks::createRouteFromGPS(const std::string& identifier,
                                  const std::vector<std::string>& names)
{
    // Sent again and again while the receiver follows it: only what differs is an edit.
    const auto route = m_program.routes().routeFromName(identifier);
    if (route && route->count() == names.size()) {
        bool same = true;
        for (std::size_t i = 0; i < names.size(); ++i)
            same = same && route->waypointReference(i)->waypoint->name == names[i];
        if (same)
            return;
    }
    m_program.routeController().createRouteFromGPS(identifier, names);
}

void NavLinks::setActiveRouteWaypointsFromGPS(const std::string& destination,
                                              const std::string& origin)
{
    WaypointController& steering = m_program.waypointController();
    const auto start = m_program.waypoints().waypointFromName(origin);
    m_legStart = start ? start->positionOnGPS() : Position();
    if (m_legStart.isKnown() && steering.isGotoWaypointFromGPS()
        && steering.activeWaypointName() == destination
        && steering.startPositionOnGPS() != m_legStart)
        steering.gotoWaypointFromGPS(steering.gotoWaypoint(), m_legStart);
}

void NavLinks::steerSimulator()
{
    const auto& waypoint = m_program.waypointController().gotoWaypoint();
    std::optional<Position> target;
    if (waypoint && waypoint->hasPosition()
        && m_program.settings().boolean("simulatorSteersToWaypoint"))
        target = waypoint->positionOnGPS();
    if (target == m_simulatorTarget)
        return;
    m_simulatorTarget = target;
    m_program.live().simulator().setSteerTo(target);
}

void NavLinks::dropGoneRoute()
{
    RouteController& controller = m_program.routeController();
    const auto& route = controller.gotoRoute();
    if (route && m_program.routes().named(route->name) != route)
        controller.cancelRoute();
}

} // namespace kelvox
