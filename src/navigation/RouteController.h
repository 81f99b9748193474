#pragma once

#include "base/Position.h"
#include "navigation/RoutesModel.h"
#include "navigation/TracksModel.h"
#include "navigation/WaypointController.h"

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace kelvox {

/// Following a route: the active route, the place in it, and the advance from waypoint to waypoint.
/// Main thread. Give each position to the WaypointController first, then here. All references must
/// outlive the controller.
class RouteController {
public:
    RouteController(RoutesModel& routes, WaypointsModel& waypoints, TracksModel& tracks,
                    WaypointController& waypointController);

    void plotPosition(Position position);
    void applicationWillSleep() { m_sleeping = true; }
    void applicationWillWake() { m_sleeping = false; }
    void setChangeHandler(std::function<void()> handler); ///< lists and chart show routes anew

    /// Steers to the reference, or to the route's first one; the leg starts at the vessel.
    bool onRouteGoto(const RoutePointer& route,
                     const WaypointReferencePointer& reference = nullptr);
    void cancelRoute(); ///< and the active waypoint
    [[nodiscard]] const RoutePointer& gotoRoute() const { return m_gotoRoute; }
    [[nodiscard]] const WaypointReferencePointer& gotoWaypointReference() const
    {
        return m_gotoReference;
    }
    /// Where the next leg starts: the place of the waypoint being steered to; unknown without.
    [[nodiscard]] Position startPosition() const;

    void setAutoNext(bool on);
    [[nodiscard]] bool autoNext() const { return m_autoNext; }
    void onRoutesAutoNext() { setAutoNext(!m_autoNext); }
    /// Advances when the waypoint is reached. On the last leg auto-next switches itself off.
    void checkAutoNext();

    void onRouteInvert(const RoutePointer& route);
    /// A new route without waypoints; an empty name becomes the next free one.
    RoutePointer createRoute(std::string_view name);
    /// Waypoints where the track turns: see createRouteFromTrack(). Of the selected points, or of
    /// all where fewer than two are selected.
    RoutePointer onRouteNewFromTrack(const std::vector<TrackPointer>& selected);
    /// Waypoints in the imported group where the sum of cross-track errors exceeds 0.05 NM, at the
    /// first point and at the last but one; the last one never becomes a waypoint, on purpose.
    /// Null for fewer than two points. One step of undo.
    RoutePointer createRouteFromTrack(const std::vector<TrackPointer>& points);
    /// From what a receiver reports: a route of that name through waypoints of those names. A route
    /// of the same name takes the new waypoints.
    RoutePointer createRouteFromGPS(std::string_view name,
                                    const std::vector<std::string>& waypoints);
    RoutePointer createRouteFromSelectedRoute(); ///< a copy under the next free name

private:
    void changed() const;

    RoutesModel& m_routes;
    WaypointsModel& m_waypoints;
    TracksModel& m_tracks;
    WaypointController& m_waypointController;
    std::function<void()> m_changeHandler;
    RoutePointer m_gotoRoute;
    WaypointReferencePointer m_gotoReference;
    Position m_position;
    bool m_autoNext = false;
    bool m_sleeping = false;
};

} // namespace kelvox
