#pragma once

#include "app/Program.h"

#include <QObject>

namespace kelvox {

/// What of the user's waypoints, routes and tracks a window has selected, for its chart and its
/// lists alike. Records that leave their model leave the selection. Main thread.
class NavSelection final : public QObject {
    Q_OBJECT
public:
    explicit NavSelection(Program& program, QObject* parent = nullptr);

    [[nodiscard]] const WaypointPointer& waypoint() const { return m_waypoint; }
    [[nodiscard]] const RoutePointer& route() const { return m_route; }
    /// Place of the selected point in the route; Route::notFound for none.
    [[nodiscard]] std::size_t routeIndex() const { return m_routeIndex; }
    /// The first point of the selected line of the track; Route::notFound for none.
    [[nodiscard]] std::size_t trackLine() const { return m_trackLine; }

    void selectWaypoint(const WaypointPointer& waypoint);
    void selectRoute(const RoutePointer& route, std::size_t index = Route::notFound);
    void selectTrackLine(std::size_t first);

    /// The row of a list under the pointer, shown on the chart.
    [[nodiscard]] const WaypointPointer& hoveredWaypoint() const { return m_hoveredWaypoint; }
    [[nodiscard]] const RoutePointer& hoveredRoute() const { return m_hoveredRoute; }
    [[nodiscard]] std::size_t hoveredTrackLine() const { return m_hoveredTrackLine; }
    void hover(const WaypointPointer& waypoint, const RoutePointer& route = nullptr,
               std::size_t trackLine = Route::notFound);

signals:
    void changed();
    void hoverChanged();

private:
    void dropGone();

    Program& m_program;
    WaypointPointer m_waypoint;
    RoutePointer m_route;
    std::size_t m_routeIndex = Route::notFound;
    std::size_t m_trackLine = Route::notFound;
    WaypointPointer m_hoveredWaypoint;
    RoutePointer m_hoveredRoute;
    std::size_t m_hoveredTrackLine = Route::notFound;
};

} // namespace kelvox
