#pragma once

#include "app/ChartHost.h"
#include "app/nav/NavSelection.h"
#include "navigation/RouteEditor.h"

#include <QObject>

#include <functional>
#include <memory>
#include <vector>

class QMenu;

namespace kelvox {

class RouteTool;
struct ExchangeRecords;

/// What the user can do with waypoints, routes and tracks in a window, whether by mouse, menu, key
/// or panel: every way does the same and tells the same. Main thread.
class NavActions final : public QObject {
    Q_OBJECT
public:
    NavActions(ChartHost& host, NavSelection& selection, QObject* parent = nullptr);
    ~NavActions() override;
    /// Who knows which waypoint is drawn at a point of the chart.
    void setWaypointFinder(std::function<WaypointPointer(QPointF)> waypointAt)
    {
        m_waypointAt = std::move(waypointAt);
    }

    [[nodiscard]] ChartHost& host() { return m_host; }
    [[nodiscard]] Program& program() { return m_host.program(); }
    [[nodiscard]] NavSelection& selection() { return m_selection; }
    [[nodiscard]] RouteEditor& editor() { return m_editor; }
    /// Whether dragging on the chart moves waypoints and legs (setting "lockWaypoints").
    [[nodiscard]] bool isLocked();

    // Waypoints.
    WaypointPointer dropWaypoint(Position position);
    void dropAtVessel();
    void gotoWaypoint(const WaypointPointer& waypoint);
    void gotoPosition(Position position);
    void removeWaypoints(const std::vector<WaypointPointer>& waypoints);
    void openWaypoint(const WaypointPointer& waypoint); ///< in its panel
    void showWaypointCard(const WaypointPointer& waypoint);

    // Routes.
    void startRoute(); ///< by clicks on the chart
    void startRouteAt(const RoutePlace& place);
    void extendRoute(const RoutePointer& route);
    /// From the point, or from the first.
    void followRoute(const RoutePointer& route, std::size_t index = Route::notFound);
    void stopNavigating();
    void removeRoutes(const std::vector<RoutePointer>& routes);
    void openRoute(const RoutePointer& route, std::size_t index = Route::notFound);
    void reverseRoute(const RoutePointer& route);
    void splitRoute(const RoutePointer& route, std::size_t index);
    void copyRoute(const RoutePointer& route);
    /// Of the points of a line, or of the whole track for Route::notFound.
    void routeFromTrack(std::size_t firstOfLine);

    // Track.
    void newTrackLine();
    void removeTrackLines(std::vector<std::size_t> firstPoints);
    void openTrack(std::size_t firstOfLine);

    /// Shows the box around these on the chart.
    void showOnChart(const std::vector<Position>& positions);
    void showRoute(const RoutePointer& route);

    void addRouteToMenu(QMenu& menu, const RoutePointer& route, std::size_t index);
    void addWaypointToMenu(QMenu& menu, const WaypointPointer& waypoint);

    /// Opens the panel of the receiver with these records to be sent.
    void sendToReceiver(const QString& name, ExchangeRecords records);
    void importFiles();
    void exportRecords();
    void printRoute(const RoutePointer& route);
    void printChart();

private:
    void addCommands();
    void addSwitch(const std::string& id, const char* setting, bool standard);
    void notFollowing();

    ChartHost& m_host;
    NavSelection& m_selection;
    RouteEditor m_editor;
    std::function<WaypointPointer(QPointF)> m_waypointAt;
    std::unique_ptr<RouteTool> m_routeTool;
};

} // namespace kelvox
