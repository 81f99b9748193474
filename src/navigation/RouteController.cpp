#include "navigation/RouteController.h"

#include "navigation/NavMath.h"

#include <cmath>
#include <utility>

namespace kelvox {

namespace {
constexpr float turnAllowanceNM = 0.05F;
} // namespace

RouteController::RouteController(RoutesModel& routes, WaypointsModel& waypoints,
                                 TracksModel& tracks, WaypointController& waypointController)
    : m_routes(routes)
    , m_waypoints(waypoints)
    , m_tracks(tracks)
    , m_waypointController(waypointController)
{
}

void RouteController::setChangeHandler(std::function<void()> handler)
{
    m_changeHandler = std::move(handler);
}

void RouteController::plotPosition(Position position)
{
    if (m_sleeping || position == m_position)
        return;
    m_position = position;
    checkAutoNext();
}

bool RouteController::onRouteGoto(const RoutePointer& route,
                                  const WaypointReferencePointer& reference)
{
    const auto chosen = reference ? reference : route ? route->waypointReference(0) : nullptr;
    if (!chosen || !chosen->waypoint)
        return false;
    m_gotoRoute = route;
    m_waypointController.cancelWaypoint();
    const Position start = startPosition(); // unknown by now: the leg starts at the vessel
    m_gotoReference = chosen;
    const bool started = m_waypointController.gotoRouteWaypoint(chosen->waypoint, start);
    changed();
    return started;
}

void RouteController::cancelRoute()
{
    m_waypointController.cancelWaypoint();
    m_gotoRoute.reset();
    m_gotoReference.reset();
    changed();
}

Position RouteController::startPosition() const
{
    if (!m_gotoRoute || !m_gotoReference || !m_gotoReference->waypoint
        || !m_waypointController.hasActiveWaypoint())
        return {};
    return m_gotoReference->waypoint->positionOnGPS();
}

void RouteController::setAutoNext(bool on)
{
    m_autoNext = on;
    changed();
}

void RouteController::checkAutoNext()
{
    if (!m_autoNext || !m_gotoRoute)
        return;
    if (!m_position.isKnown()) {
        setAutoNext(false);
        return;
    }
    if (!m_waypointController.waypointArrival())
        return;
    const auto next = m_gotoRoute->nextWaypointReference(m_gotoReference);
    if (!next)
        return;
    if (!next->waypoint || m_waypoints.named(next->waypoint->name) != next->waypoint) {
        setAutoNext(false);
        return;
    }
    const Position start = startPosition();
    m_waypointController.cancelWaypoint();
    if (!m_waypointController.gotoRouteWaypoint(next->waypoint, start))
        return;
    m_gotoReference = next;
    setAutoNext(m_gotoRoute->nextWaypointReference(next) != nullptr);
}

void RouteController::onRouteInvert(const RoutePointer& route)
{
    m_routes.edit(route, [](Route& it) { it.invertWaypointReferences(); });
    changed();
}

RoutePointer RouteController::createRoute(std::string_view name)
{
    Route route;
    route.name = name;
    auto created = m_routes.add(std::move(route));
    changed();
    return created;
}

RoutePointer RouteController::onRouteNewFromTrack(const std::vector<TrackPointer>& selected)
{
    if (selected.size() >= 2)
        return createRouteFromTrack(selected);
    const auto& all = m_tracks.objectEnumerator();
    return createRouteFromTrack({all.begin(), all.end()});
}

RoutePointer RouteController::createRouteFromTrack(const std::vector<TrackPointer>& points)
{
    std::vector<Position> places;
    for (const auto& point : points)
        if (point->hasPosition())
            places.push_back(point->positionOnGPS());
    if (places.size() < 2)
        return nullptr;

    const EditHistory::Group step(m_routes.history());
    Route route;
    Position anchor = places.front();
    float sum = 0;
    for (std::size_t i = 0; i + 1 < places.size(); ++i) {
        sum += NavMath::crossTrackFromPoint(places[i], places[i + 1], anchor);
        if (std::abs(sum) <= turnAllowanceNM && i != 0 && i + 2 != places.size())
            continue;
        route.addWaypointReference(
            m_waypoints.createWaypoint("", "", 0, WaypointsModel::GroupCode::Imported, places[i]));
        anchor = places[i];
        sum = 0;
    }
    auto created = m_routes.add(std::move(route));
    m_waypoints.setSelectedGroup(WaypointsModel::importedGroup);
    m_routes.setSelectedRoute(created);
    changed();
    return created;
}

RoutePointer RouteController::createRouteFromGPS(std::string_view name,
                                                 const std::vector<std::string>& waypoints)
{
    const EditHistory::Group step(m_routes.history());
    auto route = m_routes.routeFromName(name);
    if (!route)
        route = createRoute(name);
    m_routes.edit(route, [&](Route& it) {
        it.removeAllWaypointReferences();
        for (const auto& waypointName : waypoints)
            if (auto waypoint = m_waypoints.waypointFromName(waypointName))
                it.addWaypointReference(std::move(waypoint));
    });
    changed();
    return route;
}

RoutePointer RouteController::createRouteFromSelectedRoute()
{
    const auto selected = m_routes.selectedRoute();
    if (!selected)
        return nullptr;
    Route route;
    for (const auto& reference : selected->waypointReferences())
        route.addWaypointReference(reference->waypoint); // references of its own
    auto created = m_routes.add(std::move(route));
    changed();
    return created;
}

void RouteController::changed() const
{
    if (m_changeHandler)
        m_changeHandler();
}

} // namespace kelvox
