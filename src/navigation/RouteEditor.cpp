#include "navigation/RouteEditor.h"

#include <utility>

namespace kelvox {

WaypointPointer RouteEditor::dropWaypoint(Position position, std::string_view name)
{
    if (!position.isKnown())
        return nullptr;
    return m_waypoints.createWaypoint(name, {}, 0, WaypointsModel::GroupCode::Selected, position);
}

WaypointPointer RouteEditor::waypointOf(const RoutePlace& place)
{
    return place.waypoint ? place.waypoint : dropWaypoint(place.position);
}

void RouteEditor::removeWaypoints(const std::vector<WaypointPointer>& waypoints)
{
    const EditHistory::Group step(m_waypoints.history());
    for (const auto& waypoint : waypoints)
        m_waypoints.remove(waypoint);
}

RoutePointer RouteEditor::makeRoute(const std::vector<RoutePlace>& places, std::string_view name)
{
    if (places.size() < 2)
        return nullptr;
    const EditHistory::Group step(m_routes.history());
    Route route;
    route.name = name;
    for (const RoutePlace& place : places)
        if (auto waypoint = waypointOf(place))
            route.addWaypointReference(std::move(waypoint));
    return m_routes.add(std::move(route));
}

void RouteEditor::removeRoutes(const std::vector<RoutePointer>& routes)
{
    const EditHistory::Group step(m_routes.history());
    for (const auto& route : routes)
        m_routes.remove(route);
}

void RouteEditor::extend(const RoutePointer& route, const std::vector<RoutePlace>& places)
{
    const EditHistory::Group step(m_routes.history());
    std::vector<WaypointPointer> waypoints;
    for (const RoutePlace& place : places)
        waypoints.push_back(waypointOf(place));
    m_routes.edit(route, [&](Route& it) {
        for (const auto& waypoint : waypoints)
            it.addWaypointReference(waypoint);
    });
}

WaypointPointer RouteEditor::insertIntoLeg(const RoutePointer& route, std::size_t index,
                                           const RoutePlace& place)
{
    if (!route || index + 1 >= route->count())
        return nullptr;
    const EditHistory::Group step(m_routes.history());
    auto waypoint = waypointOf(place);
    if (!waypoint)
        return nullptr;
    m_routes.edit(route, [&](Route& it) {
        it.insertWaypointReference(std::make_shared<WaypointReference>(WaypointReference{waypoint}),
                                   index + 1);
    });
    return waypoint;
}

void RouteEditor::removeFromRoute(const RoutePointer& route, std::size_t index)
{
    if (!route || index >= route->count())
        return;
    const auto reference = route->waypointReference(index);
    m_routes.edit(route, [&](Route& it) { it.removeWaypointReference(reference); });
}

void RouteEditor::exchange(const RoutePointer& route, std::size_t first)
{
    if (route && first + 1 < route->count())
        m_routes.edit(route, [&](Route& it) { it.exchangeWaypointReference(first, first + 1); });
}

void RouteEditor::moveUp(const RoutePointer& route, std::size_t index)
{
    if (index > 0)
        exchange(route, index - 1);
}

void RouteEditor::moveDown(const RoutePointer& route, std::size_t index)
{
    exchange(route, index);
}

RoutePointer RouteEditor::split(const RoutePointer& route, std::size_t index)
{
    if (!route || index == 0 || index + 1 >= route->count())
        return nullptr;
    const EditHistory::Group step(m_routes.history());
    Route second;
    const auto references = route->waypointReferences();
    for (std::size_t i = index; i < references.size(); ++i)
        second.addWaypointReference(references[i]->waypoint);
    m_routes.edit(route, [&](Route& it) {
        for (std::size_t i = index + 1; i < references.size(); ++i)
            it.removeWaypointReference(references[i]);
    });
    return m_routes.add(std::move(second));
}

bool RouteEditor::join(const RoutePointer& route, const RoutePointer& other)
{
    if (!route || !other || route == other)
        return false;
    const EditHistory::Group step(m_routes.history());
    m_routes.edit(route, [&](Route& it) {
        const auto last = it.lastWaypointReference();
        bool first = true;
        for (const auto& reference : other->waypointReferences()) {
            const bool meets =
                std::exchange(first, false) && last && last->waypoint == reference->waypoint;
            if (!meets)
                it.addWaypointReference(reference->waypoint); // references of its own
        }
    });
    return m_routes.remove(other);
}

RoutePointer RouteEditor::copy(const RoutePointer& route)
{
    if (!route)
        return nullptr;
    Route made;
    for (const auto& reference : route->waypointReferences())
        made.addWaypointReference(reference->waypoint);
    return m_routes.add(std::move(made));
}

} // namespace kelvox
