#pragma once

#include "app/ChartHost.h"
#include "app/ChartLayer.h"
#include "navigation/RouteEditor.h"

#include <QObject>

#include <functional>
#include <vector>

class QLabel;
class QPushButton;
class QShortcut;

namespace kelvox {

/// Making a route, or lengthening one, by clicks on the chart: each click is a point, a click on a
/// waypoint takes that waypoint. Enter or a double click ends, Backspace takes the last point back,
/// Esc abandons.
class RouteTool final : public QObject, public ChartLayer {
    Q_OBJECT
public:
    /// @param waypointAt the waypoint drawn near a point of the chart, or null
    RouteTool(ChartHost& host, std::function<WaypointPointer(QPointF)> waypointAt);
    ~RouteTool() override;

    /// @param start what the route begins with: nothing, a place, or the points of a route
    /// @param fixed how many of them belong to the route already and cannot be taken back
    void begin(std::vector<RoutePlace> start, std::size_t fixed,
               std::function<void(const std::vector<RoutePlace>&)> done);
    void finish(); ///< hands the points over, if there are enough
    void takeBack();
    void abandon();
    [[nodiscard]] bool isActive() const { return m_host.tool() == this; }

    void paint(QPainter& painter, const ViewFrame& frame, const LayerLook& look) override;
    bool click(const ChartPointer& pointer, const ViewFrame& frame) override;
    bool doubleClick(const ChartPointer& pointer, const ViewFrame& frame) override;
    void hover(const ChartPointer& pointer, const ViewFrame& frame) override;
    bool cancel() override;
    [[nodiscard]] bool wantsHover() const override { return true; }

private:
    [[nodiscard]] RoutePlace placeAt(const ChartPointer& pointer) const;
    [[nodiscard]] static Position positionOf(const RoutePlace& place);
    void showCard();
    void updateCard();
    void end();

    ChartHost& m_host;
    std::function<WaypointPointer(QPointF)> m_waypointAt;
    std::function<void(const std::vector<RoutePlace>&)> m_done;
    std::vector<RoutePlace> m_places;
    std::size_t m_fixed = 0;
    std::optional<RoutePlace> m_pointer;
    std::vector<QShortcut*> m_keys;
    QLabel* m_text = nullptr;
    QPushButton* m_doneButton = nullptr;
    QPushButton* m_backButton = nullptr;
};

} // namespace kelvox
