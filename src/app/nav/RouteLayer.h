#pragma once

#include "app/ChartLayer.h"
#include "app/nav/NavActions.h"
#include "app/nav/SheetLine.h"

#include <vector>

namespace kelvox {

/// Waypoints and routes over the chart: the active leg with its arrival circle and cross-track
/// limit, the selected route with its distances, all others thin. Waypoints are dragged, and a leg
/// of the selected route is pulled to insert a point.
class RouteLayer final : public ChartLayer {
public:
    explicit RouteLayer(NavActions& actions)
        : m_actions(actions)
    {
    }

    void paint(QPainter& painter, const ViewFrame& frame, const LayerLook& look) override;
    [[nodiscard]] std::optional<ChartItem> itemAt(const ChartPointer& pointer,
                                                  const ViewFrame& frame) override;
    void addToMenu(QMenu& menu, const ChartPointer& pointer, const ViewFrame& frame) override;
    bool press(const ChartPointer& pointer, const ViewFrame& frame) override;
    void move(const ChartPointer& pointer, const ViewFrame& frame) override;
    void release(const ChartPointer& pointer, const ViewFrame& frame) override;
    bool click(const ChartPointer& pointer, const ViewFrame& frame) override;
    bool doubleClick(const ChartPointer& pointer, const ViewFrame& frame) override;
    bool cancel() override;

    /// The waypoint drawn within reach of a finger, the nearest; null where there is none.
    [[nodiscard]] WaypointPointer waypointAt(QPointF point) const;

private:
    struct Leg {
        RoutePointer route;
        std::size_t index = 0; ///< it leads from this waypoint to the next
    };
    struct DrawnLeg {
        Leg leg;
        QPolygonF line;
    };
    struct DrawnWaypoint {
        WaypointPointer waypoint;
        QPointF at;
    };
    enum class Rank { Other, Selected, Active };

    [[nodiscard]] std::optional<Leg> legAt(QPointF point) const;
    [[nodiscard]] Position placeOf(const WaypointPointer& waypoint) const;
    void paintRoute(QPainter& painter, const RoutePointer& route, Rank rank,
                    const SheetToPoints& toPoints, const LayerLook& look);
    void paintPulledLeg(QPainter& painter, const SheetToPoints& toPoints, const LayerLook& look);
    void paintActiveLeg(QPainter& painter, const ViewFrame& frame, const SheetToPoints& toPoints,
                        const LayerLook& look) const;
    void paintLegLabel(QPainter& painter, const QPolygonF& line, Position from, Position to,
                       const LayerLook& look);
    void paintWaypoints(QPainter& painter, const ViewFrame& frame, const SheetToPoints& toPoints,
                        const LayerLook& look);
    void paintNames(QPainter& painter, const std::vector<std::size_t>& order,
                    const LayerLook& look);

    NavActions& m_actions;
    double m_scale = 1;
    // What was painted last, for the mouse.
    std::vector<DrawnLeg> m_legs;
    std::vector<DrawnWaypoint> m_drawn;
    // A drag until its release.
    WaypointPointer m_dragged;
    std::optional<Leg> m_pulled;
    bool m_moved = false;
    Position m_dragPosition;
};

} // namespace kelvox
