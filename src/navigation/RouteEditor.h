#pragma once

#include "base/Position.h"
#include "navigation/RoutesModel.h"
#include "navigation/WaypointsModel.h"

#include <cstddef>
#include <string_view>
#include <vector>

namespace kelvox {

/// A point of a route in the making: a waypoint that is there, or a place for a new one.
struct RoutePlace {
    Position position;
    WaypointPointer waypoint; ///< null: one is made at the position
};

/// What the user does to routes and waypoints with hand or list, each one step of undo. A null
/// record, or an index outside the route, changes nothing. Main thread.
class RouteEditor {
public:
    RouteEditor(WaypointsModel& waypoints, RoutesModel& routes)
        : m_waypoints(waypoints)
        , m_routes(routes)
    {
    }

    /// Null for an unknown position. An empty name becomes the next free one; the waypoint joins
    /// the group that the list shows.
    WaypointPointer dropWaypoint(Position position, std::string_view name = {});
    void removeWaypoints(const std::vector<WaypointPointer>& waypoints); ///< and from all routes

    /// Null for fewer than two places. An empty name becomes the next free one.
    RoutePointer makeRoute(const std::vector<RoutePlace>& places, std::string_view name = {});
    void removeRoutes(const std::vector<RoutePointer>& routes); ///< the waypoints stay
    void extend(const RoutePointer& route, const std::vector<RoutePlace>& places);
    /// Between the waypoints at index and index + 1. @return the waypoint that stands there now
    WaypointPointer insertIntoLeg(const RoutePointer& route, std::size_t index,
                                  const RoutePlace& place);
    void removeFromRoute(const RoutePointer& route, std::size_t index); ///< the waypoint stays
    /// Exchanges the point with the one before it, or behind it.
    void moveUp(const RoutePointer& route, std::size_t index);
    void moveDown(const RoutePointer& route, std::size_t index);
    /// The second part as a route of its own; the waypoint ends the first and begins the second.
    /// Null at an end of the route.
    RoutePointer split(const RoutePointer& route, std::size_t index);
    /// Puts the waypoints of another route behind those of the first, and removes the other. A
    /// waypoint that ends one and begins the other is passed once.
    bool join(const RoutePointer& route, const RoutePointer& other);
    RoutePointer copy(const RoutePointer& route); ///< under the next free name

private:
    [[nodiscard]] WaypointPointer waypointOf(const RoutePlace& place);
    void exchange(const RoutePointer& route, std::size_t first);

    WaypointsModel& m_waypoints;
    RoutesModel& m_routes;
};

} // namespace kelvox
