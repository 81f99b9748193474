#include "app/nav/NavSelection.h"

namespace kelvox {

NavSelection::NavSelection(Program& program, QObject* parent)
    : QObject(parent)
    , m_program(program)
{
    connect(&program, &Program::waypointsChanged, this, &NavSelection::dropGone);
    connect(&program, &Program::routesChanged, this, &NavSelection::dropGone);
    connect(&program, &Program::tracksChanged, this, &NavSelection::dropGone);
}

void NavSelection::selectWaypoint(const WaypointPointer& waypoint)
{
    if (waypoint == m_waypoint)
        return;
    m_waypoint = waypoint;
    emit changed();
}

void NavSelection::selectRoute(const RoutePointer& route, std::size_t index)
{
    if (route == m_route && index == m_routeIndex)
        return;
    m_route = route;
    m_routeIndex = index;
    m_program.routes().setSelectedRoute(route);
    emit changed();
}

void NavSelection::selectTrackLine(std::size_t first)
{
    if (first == m_trackLine)
        return;
    m_trackLine = first;
    emit changed();
}

void NavSelection::hover(const WaypointPointer& waypoint, const RoutePointer& route,
                         std::size_t trackLine)
{
    if (waypoint == m_hoveredWaypoint && route == m_hoveredRoute && trackLine == m_hoveredTrackLine)
        return;
    m_hoveredWaypoint = waypoint;
    m_hoveredRoute = route;
    m_hoveredTrackLine = trackLine;
    emit hoverChanged();
}

void NavSelection::dropGone()
{
    const auto isGone = [](const auto& model, const auto& record) {
        return record && model.named(record->name) != record;
    };
    const WaypointsModel& waypoints = m_program.waypoints();
    const RoutesModel& routes = m_program.routes();
    const TracksModel& tracks = m_program.tracks();
    if (isGone(waypoints, m_hoveredWaypoint) || isGone(routes, m_hoveredRoute))
        hover(nullptr);
    bool lost = false;
    if (isGone(waypoints, m_waypoint)) {
        m_waypoint.reset();
        lost = true;
    }
    if (isGone(routes, m_route)) {
        m_route.reset();
        m_routeIndex = Route::notFound;
        m_program.routes().setSelectedRoute(nullptr);
        lost = true;
    } else if (m_route && m_routeIndex != Route::notFound && m_routeIndex >= m_route->count()) {
        m_routeIndex = Route::notFound;
        lost = true;
    }
    if (m_trackLine != Route::notFound && !tracks.isStart(m_trackLine)) {
        m_trackLine = Route::notFound; // points before it are gone
        lost = true;
    }
    if (lost)
        emit changed();
}

} // namespace kelvox
